#include "Tests/CorvantileReactive/Recorder.hpp"

namespace corvantile::rx::SubjectTest {

// Observers A and B of a subject; what A does when it gets 1 decides what both see. Who is disposed of gets
// nothing more, not even what is being delivered, whether or not an operator stands between.
TEST(Subjects, DeliverReentrantCallsAsNestedCalls) {
    struct Scene {
        Recorder recorder;
        Observable<int> stream;
        AnyObserver<int> input;
        Disposable a, b;
    };
    const struct {
        std::string name;
        std::function<void(Scene&)> react;
        std::string published, replayed;
    } cases[] = {
        {"emits", [](Scene& on) { on.input.onNext(2); }, "A next 1, A next 2, B next 2, B next 1", ""},
        {"completes", [](Scene& on) { on.input.onCompleted(); },
         "A next 1, A completed, A disposed, B completed, B disposed", ""},
        {"subscribes", [](Scene& on) { on.recorder.subscribe(on.stream, "N"); }, "A next 1, B next 1",
         "A next 1, N next 1, B next 1"},
        {"leaves", [](Scene& on) { on.a.dispose(); }, "A next 1, A disposed, B next 1", ""},
        {"leaves and emits", [](Scene& on) { on.a.dispose(), on.input.onNext(2); },
         "A next 1, A disposed, B next 2, B next 1", ""},
        {"disposes of B", [](Scene& on) { on.b.dispose(); }, "A next 1, B disposed", ""},
    };
    const auto play = [](const auto& subject, bool isStaged, const auto& react) {
        const auto staged = subject.map([](int value) { return value; });
        Scene scene{{}, isStaged ? staged : subject.asObservable(), subject.asObserver(), {}, {}};
        scene.a = scene.recorder.template subscribe<int>(scene.stream, "A", [&](int value) {
            if (value == 1) react(scene);
        });
        scene.b = scene.recorder.subscribe(scene.stream, "B");
        subject.onNext(1);
        return scene.recorder.take();
    };
    for (const auto& [name, react, published, replayed] : cases) {
        for (const bool isStaged : {false, true}) {
            SCOPED_TRACE(name + (isStaged ? ", staged" : ", direct"));
            EXPECT_EQ(play(PublishSubject<int>(), isStaged, react), published);
            EXPECT_EQ(play(ReplaySubject<int>::create(1), isStaged, react),
                      replayed.empty() ? published : replayed);
        }
    }
}

TEST(Subjects, KeepTheOrderOfSubscriptionWhenSomebodyLeaves) {
    Recorder recorder;
    PublishSubject<int> subject;
    std::vector<Disposable> stale;
    for (const auto* name : {"A", "B", "C", "D"}) stale.push_back(recorder.subscribe<int>(subject, name));
    for (const std::size_t leaving : {0u, 2u, 0u}) // the second time its handle is stale
        stale[leaving].dispose();
    EXPECT_EQ(recorder.take(), "A disposed, C disposed");

    subject.onNext(1);
    subject.onError(failure("no"));
    subject.onCompleted();

    EXPECT_EQ(recorder.take(), "B next 1, D next 1, B error no, B disposed, D error no, D disposed");
    EXPECT_FALSE(subject.hasObservers());
}

TEST(Subjects, DropEverythingSilentlyWhenDisposed) {
    const std::string failed = "error Object was disposed., disposed";
    for (const bool hasEnded : {false, true}) {
        Recorder recorder;
        PublishSubject<int> publish;
        auto replay = ReplaySubject<int>::create(1);
        replay.onNext(1);
        if (hasEnded) publish.onCompleted(), replay.onCompleted();
        recorder.subscribe<int>(publish);
        publish.dispose(), replay.dispose();
        publish.onNext(2), publish.onCompleted();
        EXPECT_EQ(recorder.take(), hasEnded ? "completed, disposed" : "");

        recorder.subscribe<int>(publish), recorder.subscribe<int>(replay);
        EXPECT_EQ(recorder.take(), failed + ", " + failed);
    }
}

TEST(Subjects, MayBeCalledFromTheDestructorOfAHandler) {
    Recorder recorder;
    PublishSubject<int> subject;
    const auto other = recorder.subscribe<int>(subject);
    auto captured = std::shared_ptr<void>(nullptr, [&](void*) {
        subject.onNext(1);
        other.dispose();
        recorder.note(subject.hasObservers() ? "observed" : "alone");
    });
    const auto handle = subject.subscribe([captured = std::move(captured)](int) {});

    handle.dispose();

    EXPECT_EQ(recorder.take(), "next 1, disposed, alone");
}

} // namespace corvantile::rx::SubjectTest
