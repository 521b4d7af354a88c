#include "Reactive/Factories.hpp"
#include "Reactive/PublishSubject.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Reactive/PlatformTest.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::rx {

namespace {

struct Plain {};
struct Named {
    static constexpr const char* typeName = "Named";
};
struct Described {
    friend std::string describe(const Described&) { return "Described(1)"; }
};

class Debug : public PlatformTest {
protected:
    // What was printed and noted since the last call, in order. Time stands still: the stamp is one text.
    std::string take() {
        noteLines();
        return recorder_.take();
    }
    void note(const std::string& text) {
        noteLines();
        recorder_.note(text);
    }
    template <class T>
    Disposable subscribe(const Observable<T>& stream) {
        return stream.subscribe([this](const T&) { note("handler"); },
                                [this](const auto&) { note("failed"); }, [this] { note("finished"); });
    }

private:
    void noteLines() {
        static const std::string stamp = "2024-01-02 03:04:05.000: ";
        for (const auto& line : platform_->console().lines())
            recorder_.note(line.starts_with(stamp) ? line.substr(stamp.size()) : line);
        platform_->console().clear();
    }
};

std::string repeated(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

} // namespace

TEST_F(Debug, PrintsOneLineEach) {
    PublishSubject<int> subject;
    subscribe(subject.debug("id"));
    subject.onNext(1);
    subject.onError(failure("boom"));

    EXPECT_EQ(take(), "id -> subscribed, id -> Event next(1), handler, id -> Event error(" +
                          describe(failure("boom")) + "), failed, id -> isDisposed");
}

TEST_F(Debug, StampsLocalTimeWithTheMillisecondsCut) {
    device_.setNow(TestDevice::startDate + std::chrono::microseconds(7999));
    device_.setTimeZoneOffset(std::chrono::minutes(-210));

    (void)empty<int>().debug("id").subscribe();

    EXPECT_EQ(platform_->console().lines().front(), "2024-01-01 23:34:05.007: id -> subscribed");
}

TEST_F(Debug, NamesTheCallerByDefault) {
    (void)PublishSubject<int>().debug().subscribe();
    const auto line = std::to_string(__LINE__ - 1);

    EXPECT_EQ(take(), "DebugTest.cpp:" + line + " (TestBody) -> subscribed");
    EXPECT_EQ(debugLabel("Plugin/Products", 41, "load()"), "Products:41 (load())");
}

TEST_F(Debug, DescribesElements) {
    using Map = std::map<std::string, int>;
    const std::pair<std::string, std::string> cases[] = {
        {describeValue(true), "true"},
        {describeValue(std::string("hello")), "hello"},
        {describeValue(std::optional<int>()), "nil"},
        {describeValue(std::optional<std::string>("a")), R"(Optional("a"))"},
        {describeValue(std::vector<std::string>{"a", "b\"c"}), R"(["a", "b\"c"])"},
        {describeValue(Map()), "[:]"},
        {describeValue(Map{{"a", 1}, {"b", 2}}), R"(["a": 1, "b": 2])"},
        {describeValue(std::pair(1, std::string("a"))), R"((1, "a"))"},
        {describeValue(std::make_shared<Described>()), "Described(1)"},
        {describeValue(std::shared_ptr<int>()), "nil"},
        {describeValue(std::vector<std::optional<int>>{1, std::nullopt}), "[Optional(1), nil]"},
        {describeValue(Named()), "Named"},
        {describeValue(Plain()), "(...)"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

TEST_F(Debug, TrimsLongEventsByCharactersAndOnlyOnRequest) {
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467"; // one character
    for (const std::string& letter : {std::string("x"), std::string("\u00E9"), family}) {
        const struct {
            int letters;
            bool trims;
            std::string expected;
        } cases[] = {
            {34, true, "next(" + repeated(34, letter) + ")"}, // 40 characters
            {35, true, "next(" + repeated(15, letter) + "..." + repeated(19, letter) + ")"},
            {35, false, "next(" + repeated(35, letter) + ")"},
        };
        for (const auto& [letters, trims, expected] : cases) {
            subscribe(just(repeated(letters, letter)).debug("id", trims));
            EXPECT_EQ(take(), "id -> subscribed, id -> Event " + expected +
                                  ", handler, id -> Event completed, finished, id -> isDisposed");
        }
    }
}

TEST_F(Debug, ShowsWhatATakeAboveAReplayDrops) {
    const auto subject = ReplaySubject<int>::create(3);
    for (const int value : {1, 2, 3}) subject.onNext(value);

    subscribe(subject.debug("id").take(1));

    EXPECT_EQ(take(), "id -> subscribed, id -> Event next(1), handler, finished, id -> Event next(2), "
                      "id -> Event next(3), id -> isDisposed");
}

TEST_F(Debug, PrintsIsDisposedAsItsSourceIsLeft) {
    PublishSubject<int> subject;
    const auto watched = subject.doOn({.onDispose = [this] { note("left"); }});

    subscribe(watched.debug("id").take(1));
    subject.onNext(1);
    EXPECT_EQ(take(), "id -> subscribed, id -> Event next(1), handler, finished, id -> isDisposed, left");

    subscribe(watched.debug("upper").debug("lower"));
    EXPECT_EQ(take(), "lower -> subscribed, upper -> subscribed");
    subject.onCompleted();
    EXPECT_EQ(take(), "upper -> Event completed, lower -> Event completed, finished, lower -> isDisposed, "
                      "upper -> isDisposed, left");
}

TEST_F(Debug, PrintsIsDisposedOnceThoughTheSourceIsGone) {
    const auto handle = subscribe(PublishSubject<int>().debug("id"));

    handle.dispose();
    handle.dispose();

    EXPECT_EQ(take(), "id -> subscribed, id -> isDisposed");
}

TEST_F(Debug, StillPrintsWhatArrivesAfterTheDisposal) {
    PublishSubject<int> subject;
    Disposable later;
    subject.subscribe(nullptr, nullptr, [&] { later.dispose(); });
    later = subscribe(subject.debug("id"));

    subject.onCompleted();

    EXPECT_EQ(take(), "id -> subscribed, id -> isDisposed, id -> Event completed");
}

} // namespace corvantile::rx
