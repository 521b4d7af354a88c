#include "Tests/CorvantileReactive/PlatformTest.hpp"

namespace corvantile::rx::DebugTest {

struct Plain {};
struct Described {
    friend std::string describe(const Described&) { return "Described(1)"; }
};

// The app's time is another one: lines show the device's.
class Debug : public PlatformTest {
protected:
    void SetUp() override {
        TestOptions options;
        options.localStore = TestStoreOptions{.catalogue = R"({"version": {"major": 4}})", .start = Date{0}};
        platform_.reset();
        platform_ = TestPlatform::launch(device_, options);
    }

    // What was printed and noted since the last call, in order. Time stands still: the stamp is one text.
    std::string trace() {
        note();
        return take();
    }
    void note(const std::string& text = "") {
        static const std::string stamp = "2024-01-02 03:04:05.000: ";
        for (const auto& line : lines())
            recorder_.note(line.starts_with(stamp) ? line.substr(stamp.size()) : line);
        platform_->console().clear();
        if (!text.empty()) recorder_.note(text);
    }
    template <class T>
    Disposable subscribe(const Observable<T>& stream) {
        return stream.subscribe([this](const T&) { note("handler"); },
                                [this](const auto&) { note("failed"); }, [this] { note("finished"); });
    }
};

std::string repeated(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

TEST_F(Debug, PrintsOneLineEachAndIsDisposedBeforeItsSourceIsLeft) {
    PublishSubject<int> subject;
    subscribe(subject.doOn({.onDispose = [this] { note("left"); }}).debug("upper").debug("lower"));
    subject.onNext(1);
    EXPECT_EQ(trace(), "lower -> subscribed, upper -> subscribed, upper -> Event next(1), "
                       "lower -> Event next(1), handler");
    subject.onError(failure("no"));
    const auto event = " -> Event error(" + describe(failure("no")) + "), ";
    EXPECT_EQ(trace(),
              "upper" + event + "lower" + event + "failed, lower -> isDisposed, upper -> isDisposed, left");
}

TEST_F(Debug, IsSilentWhereThePlatformHasGone) {
    PublishSubject<int> subject;
    const auto chain = subscribe(subject.debug("late"));
    platform_.reset();

    chain.dispose(); // as a plug-in's destructor does, however late it runs
    EXPECT_FALSE(Platform::isInstalled());
}

TEST_F(Debug, StampsLocalTimeWithTheMillisecondsCutAndNamesTheCaller) {
    device_.setNow(TestDevice::startDate + std::chrono::microseconds(7999));
    device_.setTimeZoneOffset(std::chrono::minutes(-210));

    const auto stream = empty<int>().debug();
    const auto line = std::to_string(__LINE__ - 1);
    stream.subscribe();

    EXPECT_EQ(lines().front(),
              "2024-01-01 23:34:05.007: DebugTest.cpp:" + line + " (TestBody) -> subscribed");
}

TEST_F(Debug, DescribesElements) {
    using Map = std::map<std::string, int>;
    const std::pair<std::string, std::string> cases[] = {
        {describeValue(true), "true"},
        {describeValue(std::string("a")), "a"},
        {describeValue(std::optional<std::string>("a")), R"(Optional("a"))"},
        {describeValue(std::vector<std::optional<int>>{1, std::nullopt}), "[Optional(1), nil]"},
        {describeValue(Map()), "[:]"},
        {describeValue(Map{{"a", 1}, {"b\"", 2}}), R"(["a": 1, "b\"": 2])"},
        {describeValue(std::pair(std::make_shared<Described>(), std::string("a"))), R"((Described(1), "a"))"},
        {describeValue(Plain()), "(...)"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

TEST_F(Debug, TrimsLongEventsByCharactersAndOnlyOnRequest) {
    // Each is one character.
    const std::string thumb = "\U0001F44D\U0001F3FD", family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
    for (const std::string& letter : {std::string("x"), thumb, family}) {
        const struct {
            int letters;
            bool trims;
            std::string expected;
        } cases[] = {{34, true, repeated(34, letter)}, // an event of 40 characters
                     {35, true, repeated(15, letter) + "..." + repeated(19, letter)},
                     {35, false, repeated(35, letter)}};
        for (const auto& [letters, trims, expected] : cases) {
            const auto stream = just(repeated(letters, letter));
            subscribe(stream.debug("id", trims).take(1));
            EXPECT_EQ(trace(), "id -> subscribed, id -> Event next(" + expected +
                                   "), handler, finished, id -> Event completed, id -> isDisposed");
        }
    }
}

} // namespace corvantile::rx::DebugTest
