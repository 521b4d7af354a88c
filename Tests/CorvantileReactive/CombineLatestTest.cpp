#include "CorvantileReactive/CombineLatest.hpp"
#include "Tests/CorvantileReactive/Recorder.hpp"

namespace corvantile::rx::CombineLatestTest {

TEST(CombineLatest, PairsTheLatestElementsUntilNoneCanFollow) {
    using Side = const PublishSubject<int>&;
    const struct {
        const char* name;
        void (*emit)(Side a, Side b);
        std::string expected;
    } cases[] = {
        {"once both have one", [](Side a, Side b) { a.onNext(1), a.onNext(2), b.onNext(3), a.onNext(4); },
         "next (2, 3), next (4, 3)"},
        {"while one lives", [](Side a, Side b) { a.onNext(1), b.onNext(2), a.onCompleted(), b.onNext(3); },
         "next (1, 2), next (1, 3)"},
        {"until both complete",
         [](Side a, Side b) { a.onNext(1), b.onNext(2), a.onCompleted(), b.onCompleted(); },
         "next (1, 2), completed, disposed"},
        {"waits for an empty side", [](Side a, Side) { a.onCompleted(); }, ""},
        {"which the next element ends", [](Side a, Side b) { a.onCompleted(), b.onNext(1), b.onNext(2); },
         "completed, disposed"},
        {"fails at once", [](Side a, Side b) { a.onNext(1), b.onError(failure("b")), a.onNext(2); },
         "error b, disposed"},
    };
    for (const auto& [name, emit, expected] : cases) {
        SCOPED_TRACE(name);
        Recorder recorder;
        PublishSubject<int> a, b;
        recorder.subscribe(combineLatest(a, b));
        emit(a, b);
        EXPECT_EQ(recorder.take(), expected);
        EXPECT_EQ(b.hasObservers(), !expected.ends_with("disposed"));
    }
}

TEST(CombineLatest, CollapsesTheReplayOfItsFirstSide) {
    Recorder recorder;
    const auto a = ReplaySubject<std::string>::createUnbounded();
    const auto b = ReplaySubject<int>::createUnbounded();
    a.onNext("x"), a.onNext("y"), b.onNext(1), b.onNext(2);
    recorder.subscribe(combineLatest(a, b));
    EXPECT_EQ(recorder.take(), R"(next ("y", 1), next ("y", 2))");
    recorder.subscribe(combineLatest(a, b).take(1));
    EXPECT_EQ(recorder.take(), R"(next ("y", 1), completed, disposed)");
}

TEST(CombineLatest, NestsWhatItsHandlerEmits) {
    Recorder recorder;
    PublishSubject<int> a, b;
    const auto sum = combineLatest(a, b, [](int first, int second) { return first + second; });
    recorder.subscribe<int>(sum, "", [&](int value) {
        if (value == 3) b.onNext(10);
        recorder.note("handled " + std::to_string(value));
    });

    a.onNext(1);
    b.onNext(2);

    EXPECT_EQ(recorder.take(), "next 3, next 11, handled 11, handled 3");
}

} // namespace corvantile::rx::CombineLatestTest
