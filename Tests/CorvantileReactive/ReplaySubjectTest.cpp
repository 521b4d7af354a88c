#include "Tests/CorvantileReactive/Recorder.hpp"

namespace corvantile::rx::ReplaySubjectTest {

TEST(ReplaySubjects, ReplayTheNewestElementsAndTheTerminal) {
    constexpr long long unbounded = -1;
    const std::string all = "next 1, next 2, next 3, ";
    const std::pair<long long, std::string> cases[] = {
        {0, ""}, {1, "next 3, "}, {2, "next 2, next 3, "}, {9, all}, {unbounded, all}};
    for (const auto& [size, replayed] : cases)
        for (const bool fails : {false, true}) {
            const auto subject =
                size == unbounded ? ReplaySubject<int>::createUnbounded() : ReplaySubject<int>::create(size);
            for (const int value : {1, 2, 3}) subject.onNext(value);
            Recorder recorder;
            recorder.subscribe<int>(subject);
            fails ? subject.onError(failure("no")) : subject.onCompleted();
            subject.onNext(4);
            const auto expected = replayed + (fails ? "error no, disposed" : "completed, disposed");
            EXPECT_EQ(recorder.take(), expected) << size;

            recorder.subscribe<int>(subject);
            EXPECT_EQ(recorder.take(), expected) << size;
        }
}

TEST(ReplaySubjects, DeliverOnceAndInOrderWhatTheReplayHandlerEmits) {
    Recorder recorder;
    const auto subject = ReplaySubject<int>::create(2);
    subject.onNext(1);
    recorder.subscribe(subject.filter([](int value) { return value > 1; }), "old");

    recorder.subscribe<int>(subject, "new", [&](int value) {
        if (value == 1) subject.onNext(2);
        if (value == 2) subject.onNext(3), subject.onCompleted();
    });

    EXPECT_EQ(recorder.take(), "new next 1, old next 2, new next 2, old next 3, old completed, old disposed, "
                               "new next 3, new completed, new disposed");
}

TEST(ReplaySubjects, MayBeCalledFromTheDestructorOfWhatTheyDrop) {
    Recorder recorder;
    const auto subject = ReplaySubject<std::shared_ptr<void>>::create(1);
    const auto element = [&](const std::string& name) {
        return std::shared_ptr<void>(nullptr, [&recorder, subject, name](void*) {
            recorder.note(name + (subject.hasObservers() ? " observed" : " unobserved"));
        });
    };
    subject.onNext(element("1"));
    subject.onNext(element("2"));
    EXPECT_EQ(recorder.take(), "1 unobserved");

    subject.onError(std::make_exception_ptr(element("error")));
    subject.dispose();
    EXPECT_EQ(recorder.take(), "error unobserved, 2 unobserved");
}

} // namespace corvantile::rx::ReplaySubjectTest
