#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "Tests/Contracts/Harness.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"

namespace corvantile::UserDefaultsContractTest {

using namespace std::string_literals;
using Dictionary = NSUserDefaults::Dictionary;

template <class Harness>
class UserDefaultsContract : public PortContract<Harness> {
protected:
    [[nodiscard]] static std::shared_ptr<NSUserDefaults> defaults() {
        return NSUserDefaults::standardUserDefaults();
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
    this->defaults()->setValue("replaced", "true");
    for (const auto& [key, value] : everything) this->defaults()->setValue(value, key);
    this->defaults()->setValue("text", "removed");
    this->defaults()->removeObjectForKey("removed");
    this->defaults()->removeObjectForKey("never set");
    EXPECT_TRUE(this->defaults()->synchronize());

    for (int launch = 1; launch <= 2; ++launch) {
        EXPECT_EQ(this->defaults()->dictionaryRepresentation(), everything);
        this->relaunch();
    }
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

TYPED_TEST(UserDefaultsContract, IsReadAndWrittenByManyThreadsAtOnce) {
    const auto defaults = this->defaults();
    atOnce(4, [&](int number) {
        const auto key = std::to_string(number);
        for (int value = 1; value <= 50; ++value) {
            defaults->setValue(std::to_string(value), key);
            EXPECT_EQ(defaults->stringForKey(key), std::to_string(value));
        }
    });
    this->relaunch();

    EXPECT_EQ(this->defaults()->dictionaryRepresentation(),
              (Dictionary{{"0", "50"}, {"1", "50"}, {"2", "50"}, {"3", "50"}}));
}

} // namespace corvantile::UserDefaultsContractTest
