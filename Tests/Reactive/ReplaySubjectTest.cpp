#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/Recorder.hpp"

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>

namespace corvantile::rx {

TEST(ReplaySubjects, ReplayTheNewestElementsAndTheTerminal) {
    const struct {
        ReplaySubject<int> (*make)();
        std::string replayed;
    } cases[] = {
        {[] { return ReplaySubject<int>::create(0); }, ""},
        {[] { return ReplaySubject<int>::create(1); }, "next 3"},
        {[] { return ReplaySubject<int>::create(2); }, "next 2, next 3"},
        {[] { return ReplaySubject<int>::create(9); }, "next 1, next 2, next 3"},
        {[] { return ReplaySubject<int>::createUnbounded(); }, "next 1, next 2, next 3"},
    };
    const struct {
        void (*end)(const ReplaySubject<int>&);
        std::string expected;
    } ends[] = {
        {[](const ReplaySubject<int>&) {}, ""},
        {[](const ReplaySubject<int>& subject) { subject.onCompleted(); }, "completed, disposed"},
        {[](const ReplaySubject<int>& subject) { subject.onError(failure("boom")); }, "error boom, disposed"},
    };
    for (const auto& [make, replayed] : cases) {
        for (const auto& [end, terminal] : ends) {
            SCOPED_TRACE(replayed + " | " + terminal);
            Recorder recorder;
            const auto subject = make();
            for (const int value : {1, 2, 3}) subject.onNext(value);
            end(subject);
            if (!terminal.empty()) subject.onNext(4);

            recorder.subscribe<int>(subject);
            recorder.subscribe<int>(subject);

            const auto once = replayed + (replayed.empty() || terminal.empty() ? "" : ", ") + terminal;
            EXPECT_EQ(recorder.take(), once.empty() ? "" : once + ", " + once);
        }
    }
}

TEST(ReplaySubjectDeathTest, RejectsANegativeSize) {
    EXPECT_DEATH((void)ReplaySubject<int>::create(-1), "ReplaySubject:[0-9]+: Fatal error: .*buffer size");
}

TEST(ReplaySubjects, GoOnLiveAfterTheReplay) {
    Recorder recorder;
    const auto subject = ReplaySubject<int>::create(2);
    recorder.subscribe<int>(subject, "A");
    subject.onNext(1);
    recorder.subscribe<int>(subject, "B");
    subject.onNext(2);

    EXPECT_EQ(recorder.take(), "A next 1, B next 1, A next 2, B next 2");
}

TEST(ReplaySubjects, DeliverOnceAndInOrderWhatTheReplayHandlerEmits) {
    Recorder recorder;
    for (const long long size : {1, 2}) {
        const auto subject = ReplaySubject<int>::create(size);
        subject.onNext(1);
        const auto old = recorder.subscribe<int>(subject, "old");
        recorder.take();

        recorder.subscribe<int>(subject, "new", [&](int value) {
            if (value == 1) subject.onNext(2);
            if (value == 2) subject.onNext(3), subject.onCompleted();
        });

        EXPECT_EQ(recorder.take(), "new next 1, old next 2, new next 2, old next 3, old completed, "
                                   "old disposed, new next 3, new completed, new disposed");
    }
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

} // namespace corvantile::rx
