#include "CorvantileReactive/CombineLatest.hpp"
#include "Tests/CorvantileReactive/Recorder.hpp"

#include <stdexcept>

namespace corvantile::rx::OperatorTest {

using Apply = std::function<Observable<int>(const Observable<int>&)>;

TEST(Operators, TransformAndSelect) {
    const auto isOdd = [](int value) { return value % 2 != 0; };
    const std::pair<Apply, std::string> cases[] = {
        {[](const auto& s) { return s.map([](int value) { return -value; }); }, "-1, -1, -3, -2, -1"},
        {[&](const auto& s) { return s.filter(isOdd); }, "1, 1, 3, 1"},
        {[&](const auto& s) { return s.skipWhile(isOdd); }, "2, 1"}, // asks no more after the first no
        {[](const auto& s) { return s.distinctUntilChanged(); }, "1, 3, 2, 1"},
        {[](const auto& s) { return s.take(9); }, "1, 1, 3, 2, 1"},
    };
    for (const auto& [apply, expected] : cases) {
        Recorder recorder;
        PublishSubject<int> subject;
        const auto stream = apply(subject);
        const auto ahead = stream.subscribe(); // each subscription has a state of its own
        subject.onNext(2);
        stream.subscribe([&](int value) { recorder.note(std::to_string(value)); }, nullptr,
                         recorder.noting("end"));

        for (const int value : {1, 1, 3, 2, 1}) subject.onNext(value);
        subject.onCompleted();

        EXPECT_EQ(recorder.take(), expected + ", end");
    }
}

TEST(Operators, TurnWhatTheirFunctionThrowsIntoAnErrorAndLeave) {
    const auto fails = [](int) -> bool { throw std::runtime_error("boom"); };
    const Apply cases[] = {
        [&](const auto& s) { return s.map([&](int value) { return int{fails(value)}; }); },
        [&](const auto& s) { return s.filter(fails); },
        [&](const auto& s) { return s.skipWhile(fails); },
        [&](const auto& s) { return s.doOn({.onNext = fails}); },
        [&](const auto& s) {
            return s.take(1).doOn({.onCompleted = [&] { fails(1); }}).filter([](int) { return false; });
        },
        [&](const auto& s) { return combineLatest(s, just(2), [&](int a, int) { return int{fails(a)}; }); },
    };
    for (const auto& apply : cases) {
        Recorder recorder;
        PublishSubject<int> subject;
        recorder.subscribe(apply(subject));

        subject.onNext(1);

        EXPECT_EQ(recorder.take(), "error boom, disposed");
        EXPECT_FALSE(subject.hasObservers());
    }
}

TEST(Take, OfNothingCompletesWithoutSubscribing) {
    Recorder recorder;
    recorder.subscribe(just(1).doOn({.onSubscribe = recorder.noting("subscribed")}).take(0));
    EXPECT_EQ(recorder.take(), "completed, disposed");
    EXPECT_DEATH((void)just(1).take(-1), "Elementwise:[0-9]+: Fatal error: take needs");
}

TEST(Take, CountsWhatItsHandlerEmitsAndWhatIsReplayed) {
    const std::pair<long long, std::string> cases[] = {{1, "next 1"}, {2, "next 1, next 2"}};
    for (const auto& [count, expected] : cases) {
        Recorder recorder;
        const auto subject = ReplaySubject<int>::createUnbounded();
        recorder.subscribe<int>(subject.take(count), "", [&](int value) { subject.onNext(value + 1); });
        subject.onNext(1);
        EXPECT_EQ(recorder.take(), expected + ", completed, disposed");

        recorder.subscribe(subject.take(count));
        EXPECT_EQ(recorder.take(), expected + ", completed, disposed");
        EXPECT_FALSE(subject.hasObservers());
    }
}

TEST(DoOn, RunsAroundEachEventAndAfterTheSourceWasLeft) {
    Recorder recorder;
    const auto noting = [&](const char* text) { return [&, text](const auto&) { recorder.note(text); }; };
    PublishSubject<int> subject;
    const auto noted = subject.doOn({.onNext = noting("onNext"),
                                     .afterNext = noting("afterNext"),
                                     .onError = noting("onError"),
                                     .afterError = noting("afterError"),
                                     .onSubscribe = recorder.noting("onSubscribe"),
                                     .onSubscribed = recorder.noting("onSubscribed"),
                                     .onDispose = recorder.noting("onDispose")});
    // The operator below is left first, by its own end.
    recorder.subscribe(noted.doOn({.onDispose = recorder.noting("below")}));
    subject.onNext(1);
    EXPECT_EQ(recorder.take(), "onSubscribe, onSubscribed, onNext, next 1, afterNext");
    subject.onError(failure("no"));
    EXPECT_EQ(recorder.take(), "onError, error no, disposed, onDispose, below, afterError");
}

} // namespace corvantile::rx::OperatorTest
