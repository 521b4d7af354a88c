#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/Recorder.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::rx {

namespace {

struct Subject {
    template <class Handle>
    explicit Subject(const Handle& handle) : stream(handle), input(handle.asObserver()) {}
    Observable<int> stream;
    AnyObserver<int> input;
};

enum class Kind { publish, replay };

Subject make(Kind kind) {
    return kind == Kind::publish ? Subject(PublishSubject<int>()) : Subject(ReplaySubject<int>::create(1));
}

} // namespace

// Observers A and B; what A's handler does at the element 1 decides what both see.
TEST(Subjects, DeliverReentrantCallsAsNestedCalls) {
    struct Stage {
        Recorder& recorder;
        Subject subject;
        Disposable a, b;
    };
    const struct {
        const char* name;
        std::function<void(Stage&)> react;
        std::string published, replayed;
    } cases[] = {
        {"emits", [](Stage& on) { on.subject.input.onNext(2); }, "A next 1, A next 2, B next 2, B next 1",
         "A next 1, A next 2, B next 2, B next 1"},
        {"completes", [](Stage& on) { on.subject.input.onCompleted(); },
         "A next 1, A completed, A disposed, B completed, B disposed",
         "A next 1, A completed, A disposed, B completed, B disposed"},
        {"subscribes", [](Stage& on) { on.recorder.subscribe(on.subject.stream, "N"); }, "A next 1, B next 1",
         "A next 1, N next 1, B next 1"},
        {"leaves", [](Stage& on) { on.a.dispose(); }, "A next 1, A disposed, B next 1",
         "A next 1, A disposed, B next 1"},
        {"leaves and emits", [](Stage& on) { on.a.dispose(), on.subject.input.onNext(2); },
         "A next 1, A disposed, B next 2, B next 1", "A next 1, A disposed, B next 2, B next 1"},
        {"disposes of B", [](Stage& on) { on.b.dispose(); }, "A next 1, B disposed", "A next 1, B disposed"},
    };
    for (const auto& [name, react, published, replayed] : cases) {
        for (const auto kind : {Kind::publish, Kind::replay}) {
            for (const bool isStaged : {false, true}) {
                SCOPED_TRACE(std::string(name) + (isStaged ? ", staged" : ", direct"));
                Recorder recorder;
                Stage stage{recorder, make(kind), {}, {}};
                const auto stream = isStaged ? stage.subject.stream.map([](int value) { return value; })
                                             : stage.subject.stream;
                stage.a = recorder.subscribe<int>(stream, "A", [&, &react = react](int value) {
                    if (value == 1) react(stage);
                });
                stage.b = recorder.subscribe(stream, "B");

                stage.subject.input.onNext(1);

                EXPECT_EQ(recorder.take(), kind == Kind::publish ? published : replayed);
            }
        }
    }
}

TEST(Subjects, DeliverInTheOrderOfSubscriptionAlsoAfterSomebodyLeft) {
    Recorder recorder;
    PublishSubject<int> subject;
    recorder.subscribe<int>(subject, "A").dispose();
    recorder.subscribe<int>(subject, "B");
    recorder.subscribe<int>(subject, "C").dispose();
    recorder.subscribe<int>(subject, "D");
    ASSERT_EQ(recorder.take(), "A disposed, C disposed");

    subject.onNext(1);

    EXPECT_EQ(recorder.take(), "B next 1, D next 1");
}

TEST(Subjects, EndEveryObserverOnceAndLetThemGo) {
    Recorder recorder;
    PublishSubject<int> subject;
    recorder.subscribe<int>(subject, "A");
    recorder.subscribe<int>(subject, "B");
    EXPECT_TRUE(subject.hasObservers());

    subject.onError(failure("boom"));
    subject.onCompleted();
    subject.onNext(1);

    EXPECT_EQ(recorder.take(), "A error boom, A disposed, B error boom, B disposed");
    EXPECT_FALSE(subject.hasObservers());
}

TEST(Subjects, GiveALaterSubscriberOfAPublishSubjectItsTerminalAlone) {
    Recorder recorder;
    PublishSubject<int> completed, failed;
    completed.onNext(1);
    completed.onCompleted();
    failed.onError(failure("boom"));

    recorder.subscribe<int>(completed);
    recorder.subscribe<int>(failed);

    EXPECT_EQ(recorder.take(), "completed, disposed, error boom, disposed");
}

TEST(Subjects, DropEverythingSilentlyWhenDisposed) {
    Recorder recorder;
    for (const bool hasEnded : {false, true}) {
        PublishSubject<int> publish;
        auto replay = ReplaySubject<int>::createUnbounded();
        replay.onNext(1);
        if (hasEnded) publish.onCompleted(), replay.onCompleted();
        recorder.subscribe<int>(publish);
        recorder.take();

        publish.dispose();
        replay.dispose();
        publish.onNext(2);
        publish.onCompleted();
        EXPECT_EQ(recorder.take(), "");

        recorder.subscribe<int>(publish, "P");
        recorder.subscribe<int>(replay, "R");
        EXPECT_EQ(recorder.take(), "P error Object was disposed., P disposed, "
                                   "R error Object was disposed., R disposed");
    }
}

TEST(Subjects, LeaveOthersAloneWhenAStaleHandleIsDisposed) {
    Recorder recorder;
    PublishSubject<int> subject;
    std::vector<Disposable> stale;
    for (int i = 0; i < 100; ++i) {
        stale.push_back(subject.subscribe());
        stale.back().dispose();
    }
    recorder.subscribe<int>(subject);

    for (const auto& handle : stale) handle.dispose();
    subject.onNext(1);

    EXPECT_EQ(recorder.take(), "next 1");
}

TEST(Subjects, MayBeGoneBeforeTheHandleIsDisposed) {
    Recorder recorder;
    std::optional<PublishSubject<int>> subject(std::in_place);
    const auto direct = recorder.subscribe<int>(*subject, "A");
    const auto staged = recorder.subscribe(subject->doOn({.onDispose = recorder.noting("left")}), "B");

    subject.reset();
    direct.dispose();
    staged.dispose();

    EXPECT_EQ(recorder.take(), "A disposed, left, B disposed");
}

TEST(Subjects, MayBeCalledFromTheDestructorOfAHandler) {
    Recorder recorder;
    PublishSubject<int> subject;
    Disposable other = recorder.subscribe<int>(subject, "other");
    auto captured = std::shared_ptr<void>(nullptr, [&](void*) {
        subject.onNext(1);
        other.dispose();
        recorder.note(subject.hasObservers() ? "observed" : "alone");
    });
    const auto handle = subject.subscribe([captured = std::move(captured)](int) {});

    handle.dispose();

    EXPECT_EQ(recorder.take(), "other next 1, other disposed, alone");
}

TEST(Subjects, AreTheSameSubjectInEveryCopy) {
    Recorder recorder;
    const PublishSubject<int> subject;
    const auto copy = subject;
    recorder.subscribe(subject.asObservable());

    copy.asObserver().onNext(1);

    EXPECT_EQ(recorder.take(), "next 1");
}

} // namespace corvantile::rx
