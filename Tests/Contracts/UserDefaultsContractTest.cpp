#include "Platform/Foundation/NSUserDefaults.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gtest/gtest.h>

#include <latch>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace corvantile {
namespace {

using namespace std::string_literals;
using Dictionary = NSUserDefaults::Dictionary;

template <class Harness>
class UserDefaultsContract : public PortContract<Harness> {
protected:
    [[nodiscard]] static std::shared_ptr<NSUserDefaults> defaults() {
        return NSUserDefaults::standardUserDefaults();
    }

    // What the main loop does between two items.
    void turn() {
        bool hasRun = false;
        this->mainQueue()->async([&] { hasRun = true; });
        ASSERT_TRUE(this->runUntil([&] { return hasRun; }));
    }
};
TYPED_TEST_SUITE(UserDefaultsContract, Harnesses);

TYPED_TEST(UserDefaultsContract, KeepsEveryValueUnderEveryKeyBeyondTheProcess) {
    const Dictionary everything = {{"", "under the empty key"},
                                   {"empty text", ""},
                                   {"text", "line\r\nNUL\0ä🔑"s},
                                   {"no UTF-8", "\xFF\xFE\xC3"},
                                   {"true", true},
                                   {"false", false},
                                   {"NUL\0a"s, "a"},
                                   {"NUL\0b"s, "b"},
                                   {"NUL\0"s, "none"},
                                   {"NUL", "short"},
                                   {"'; DROP TABLE defaults; --", "%"},
                                   {"\xFF", "key without UTF-8"},
                                   {std::string(10'000, 'k'), std::string(100'000, 'v')}};
    for (const auto& [key, value] : everything) this->defaults()->setValue(value, key);

    EXPECT_EQ(this->defaults()->dictionaryRepresentation(), everything);
    this->relaunch();

    EXPECT_EQ(this->defaults()->dictionaryRepresentation(), everything);
    for (const auto& [key, value] : everything) EXPECT_EQ(this->defaults()->valueForKey(key), value) << key;
    EXPECT_EQ(this->defaults()->valueForKey("NUL\0c"s), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, ReadsOneKindOfValueAsTheOther) {
    const struct {
        std::optional<NSUserDefaults::Value> value;
        std::optional<std::string> text;
        bool boolean;
    } cases[] = {{std::nullopt, std::nullopt, false},
                 {true, "1", true},
                 {false, "0", false},
                 {"YES", "YES", true},
                 {"True", "True", true},
                 {"1", "1", true},
                 {"NO", "NO", false},
                 {"yes please", "yes please", false},
                 {"", "", false}};
    for (const auto& [value, text, boolean] : cases) {
        SCOPED_TRACE(text.value_or("nothing"));
        this->defaults()->setValue(value, "key");
        EXPECT_EQ(this->defaults()->stringForKey("key"), text);
        EXPECT_EQ(this->defaults()->boolForKey("key"), boolean);
    }
}

TYPED_TEST(UserDefaultsContract, ReplacesAndRemovesForGood) {
    this->defaults()->setValue("first", "replaced");
    this->defaults()->setBool(true, "replaced");
    this->defaults()->setValue("text", "removed");
    this->defaults()->removeObjectForKey("removed");
    this->defaults()->removeObjectForKey("never set");

    for (int launch = 1; launch <= 2; ++launch) {
        EXPECT_EQ(this->defaults()->dictionaryRepresentation(), (Dictionary{{"replaced", true}}));
        this->relaunch();
    }
}

TYPED_TEST(UserDefaultsContract, SeesWhatAnotherProcessWroteAfterATurnOfTheMainLoop) {
    const auto ours = this->defaults();
    ours->setValue("old", "changed");
    ours->setValue("here", "removed");
    const auto another = this->launchAnother();
    const auto& theirs = another->ports().userDefaults;
    EXPECT_EQ(theirs->stringForKey("changed"), "old");

    theirs->setValue("new", "changed");
    theirs->removeObjectForKey("removed");
    this->turn();

    EXPECT_EQ(ours->dictionaryRepresentation(), (Dictionary{{"changed", "new"}}));
}

TYPED_TEST(UserDefaultsContract, LosesNoneOfTwoProcessesWritesWhoeverKnowsOfThem) {
    const auto ours = this->defaults();
    const auto another = this->launchAnother();
    const auto& theirs = another->ports().userDefaults;
    for (int i = 0; i < 10; ++i) {
        ours->setValue(std::to_string(i), "ours");
        theirs->setValue(std::to_string(i), "theirs");
        theirs->setValue(std::to_string(i), "last");
        ours->setValue("ours at " + std::to_string(i), "last");
    }
    this->relaunch();

    EXPECT_EQ(this->defaults()->dictionaryRepresentation(),
              (Dictionary{{"ours", "9"}, {"theirs", "9"}, {"last", "ours at 9"}}));
}

TYPED_TEST(UserDefaultsContract, IsReadAndWrittenByManyThreadsAtOnce) {
    constexpr int threadCount = 4;
    constexpr int lastValue = 50;
    const auto defaults = this->defaults();
    std::latch start(threadCount);
    std::vector<int> misread(threadCount);
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number)
        threads.emplace_back([&, number] {
            const auto key = std::to_string(number);
            start.arrive_and_wait();
            for (int value = 1; value <= lastValue; ++value) {
                defaults->setValue(std::to_string(value), key);
                if (defaults->stringForKey(key) != std::to_string(value))
                    ++misread[static_cast<std::size_t>(number)];
            }
        });
    for (auto& thread : threads) thread.join();
    this->relaunch();

    EXPECT_EQ(misread, std::vector<int>(threadCount));
    for (int number = 0; number < threadCount; ++number)
        EXPECT_EQ(this->defaults()->stringForKey(std::to_string(number)), std::to_string(lastValue));
}

TYPED_TEST(UserDefaultsContract, AnswersThatItHasSynchronized) {
    EXPECT_TRUE(this->defaults()->synchronize());
    this->defaults()->setBool(true, "key");
    EXPECT_TRUE(this->defaults()->synchronize());
    EXPECT_TRUE(this->defaults()->boolForKey("key"));
}

} // namespace
} // namespace corvantile
