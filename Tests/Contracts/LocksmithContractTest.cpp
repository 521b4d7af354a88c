#include "CorvantilePlatform/Keychain/Locksmith.hpp"

#include "Tests/Contracts/Harness.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"

namespace corvantile::LocksmithContractTest {

using namespace std::string_literals;

template <class Harness>
class LocksmithContract : public PortContract<Harness> {
protected:
    [[nodiscard]] Locksmith& keychain() { return *this->ports().keychain; }

    // The status that the call is refused with; nullopt when it is not.
    template <class Call>
    static std::optional<int> refusal(Call call) {
        try {
            call();
        } catch (const NSError& error) {
            EXPECT_EQ(error.domain(), keychainErrorDomain);
            EXPECT_FALSE(error.localizedDescription().empty());
            return error.code();
        }
        return std::nullopt;
    }
};
TYPED_TEST_SUITE(LocksmithContract, Harnesses);

constexpr auto duplicate = static_cast<int>(KeychainStatus::duplicateItem);
constexpr auto lockedOut = static_cast<int>(KeychainStatus::interactionNotAllowed);

TYPED_TEST(LocksmithContract, GivesBackEveryKindOfValueAsItWas) {
    using Integers = std::numeric_limits<std::int64_t>;
    using Reals = std::numeric_limits<double>;
    const KeychainDictionary everything = {
        {"", "an empty key"},
        {"text", "p\0ä\U0001F511"s},
        {"empty text", ""},
        {"boolean", true},
        {"integer 1", 1},
        {"real 1", 1.0},
        {"smallest", Integers::min()},
        {"largest", Integers::max()},
        {"tiny", Reals::denorm_min()},
        {"endless", -Reals::infinity()},
        {"date", Date{725846400.1}},
        {"early date", Date{-Reals::max()}},
        {"data", KeychainData{0, 255, 10}},
        {"empty data", KeychainData{}},
    };

    this->keychain().save(everything, "everything", contractBundle);
    this->keychain().save({}, "nothing", contractBundle);

    EXPECT_EQ(this->keychain().load("everything", contractBundle), everything);
    EXPECT_EQ(this->keychain().load("nothing", contractBundle), KeychainDictionary{});
    EXPECT_EQ(this->keychain().load("never saved", contractBundle), std::nullopt);
}

TYPED_TEST(LocksmithContract, AddsOnceReplacesWholeEntriesDeletesOnceAndKeepsAllThatBeyondTheProcess) {
    const KeychainDictionary one = {{"old", 1}, {"both", 1}}, two = {{"both", 2}};
    for (const auto* const account : {"saved", "updated", "removed"})
        this->keychain().save(one, account, contractBundle);
    for (const auto* const account : {"updated", "added"})
        this->keychain().update(two, account, contractBundle);
    EXPECT_TRUE(this->keychain().remove("removed", contractBundle));
    EXPECT_FALSE(this->keychain().remove("removed", contractBundle));

    for (int launch = 1; launch <= 2; ++launch) {
        EXPECT_EQ(this->refusal([&] { this->keychain().save(two, "saved", contractBundle); }), duplicate);
        EXPECT_EQ(this->keychain().load("saved", contractBundle), one);
        EXPECT_EQ(this->keychain().load("updated", contractBundle), two);
        EXPECT_EQ(this->keychain().load("added", contractBundle), two);
        EXPECT_EQ(this->keychain().load("removed", contractBundle), std::nullopt);
        this->relaunch();
    }
    this->keychain().save(one, "removed", contractBundle);
}

TYPED_TEST(LocksmithContract, KeepsEveryAccountOfEveryServiceApart) {
    const std::vector<std::pair<std::string, std::string>> names = {
        {"", ""},
        {"a", ""},
        {"", "a"},
        {"ab", "c"},
        {"a", "bc"},
        {"a\0b"s, ""},
        {"a\0"s, ""},
        {"A", ""},
        {"a\u0308", ""},
        {"ä", ""},
        {"'; DROP --", "%"},
        {"\xFF\xFE", "\n"},
        {std::string(5000, 'x'), "long"},
    };
    for (std::size_t i = 0; i < names.size(); ++i)
        this->keychain().save({{"number", static_cast<int>(i)}}, names[i].first, names[i].second);

    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(this->keychain().load(names[i].first, names[i].second),
                  (KeychainDictionary{{"number", static_cast<int>(i)}}))
            << names[i].first << " of " << names[i].second;
}

TYPED_TEST(LocksmithContract, LetsExactlyOneOfManyThreadsAddAnAccount) {
    std::vector<std::atomic<int>> winners(20);
    atOnce(6, [&](int number) {
        for (std::size_t account = 0; account < winners.size(); ++account) {
            const auto refused = this->refusal([&] {
                this->keychain().save({{"winner", number}}, std::to_string(account), contractBundle);
            });
            EXPECT_EQ(refused.value_or(duplicate), duplicate);
            if (!refused) winners[account] += number;
        }
    });

    for (std::size_t account = 0; account < winners.size(); ++account)
        EXPECT_EQ(this->keychain().load(std::to_string(account), contractBundle),
                  (KeychainDictionary{{"winner", winners[account].load()}}));
}

TYPED_TEST(LocksmithContract, ReadsNothingAndRefusesTheRestWhileLocked) {
    const KeychainDictionary entry = {{"number", 1}};
    this->keychain().save(entry, "account", contractBundle);
    this->harness().setKeychainLocked(true);

    EXPECT_EQ(this->keychain().load("account", contractBundle), std::nullopt);
    EXPECT_EQ(this->refusal([&] { this->keychain().save({}, "account", contractBundle); }), lockedOut);
    EXPECT_EQ(this->refusal([&] { this->keychain().save({}, "new", contractBundle); }), lockedOut);
    EXPECT_EQ(this->refusal([&] { this->keychain().update({}, "account", contractBundle); }), lockedOut);
    EXPECT_EQ(this->refusal([&] { this->keychain().remove("account", contractBundle); }), lockedOut);

    this->harness().setKeychainLocked(false);
    EXPECT_EQ(this->keychain().load("account", contractBundle), entry);
    EXPECT_EQ(this->keychain().load("new", contractBundle), std::nullopt);
}

TYPED_TEST(LocksmithContract, BelongsToTheAppUnlessAServiceIsNamed) {
    Locksmith::saveData({{"number", 1}}, "account");
    Locksmith::updateData({{"number", 2}}, "account");
    Locksmith::saveData({{"number", 3}}, "account", "another contractBundle");

    EXPECT_EQ(Locksmith::loadDataForUserAccount("account"), (KeychainDictionary{{"number", 2}}));
    EXPECT_EQ(this->keychain().load("account", contractBundle), (KeychainDictionary{{"number", 2}}));
    EXPECT_TRUE(Locksmith::deleteDataForUserAccount("account"));
    EXPECT_EQ(Locksmith::loadDataForUserAccount("account"), std::nullopt);
    EXPECT_NE(Locksmith::loadDataForUserAccount("account", "another contractBundle"), std::nullopt);
}

} // namespace corvantile::LocksmithContractTest
