#include "Corvantile/Extension/AESText.hpp"
#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/Database/Setting.hpp"
#include "Platform/Foundation/NSError.hpp"
#include "Platform/Foundation/NSUserDefaults.hpp"
#include "Tests/Corvantile/ProcessTest.hpp"

namespace corvantile {
namespace {

using testing::Pair;
using testing::UnorderedElementsAre;

constexpr std::string_view key = "0123456789abcdef";
constexpr std::string_view iv = "fedcba9876543210";

// Writes backwards, or, once broken, not at all.
class MirrorCryptor final : public DatabaseCryptor {
public:
    std::optional<std::string> encrypt(std::string_view text) override {
        if (isBroken) return std::nullopt;
        return std::string(text.rbegin(), text.rend());
    }
    std::optional<std::string> decrypt(std::string_view text) override { return encrypt(text); }
    bool isBroken = false;
};

struct Unencodable {};
struct Unwritable {};
std::string encodeJSON(const Unwritable&) { throw NSError("encoder", 7); }
struct NoText {};
std::string encodeJSON(const NoText&) { return "\xff"; }

class RecordStore : public ProcessTest {
protected:
    auto stored() { return device_.defaults().values(); }
    template <class T>
    std::string errorOf(const std::optional<T>& value) {
        try {
            store_.setObject(value, "k", &cryptor_);
        } catch (const NSError& error) {
            return describe(error);
        }
        return "none";
    }

    UserDefaultsDatabase store_;
    MirrorCryptor cryptor_;
};

TEST_F(RecordStore, StoresTheCryptorsTextUnderThePrefixedKey) {
    store_.setObject(std::string("a/\"b"), "uuidKey", &cryptor_);

    EXPECT_THAT(stored(),
                UnorderedElementsAre(Pair("appconfig_uuidKey", NSUserDefaults::Value("\"b\"\\/a\""))));
    EXPECT_EQ(store_.getData("uuidKey", &cryptor_), "\"a/\\\"b\"");
    EXPECT_EQ(store_.getData("other", &cryptor_), std::nullopt);
}

TEST_F(RecordStore, RemovesTheKeyWhenThereIsNothingSealedToStore) {
    for (auto* const cryptor :
         {static_cast<DatabaseCryptor*>(nullptr), static_cast<DatabaseCryptor*>(&cryptor_)}) {
        cryptor_.isBroken = false;
        store_.setObject(Setting(), "k", &cryptor_);
        cryptor_.isBroken = true;

        store_.setObject(Setting(), "k", cryptor);

        EXPECT_TRUE(stored().empty());
    }
}

TEST_F(RecordStore, ThrowsForWhatItCannotEncodeAndLeavesTheStoredValueAlone) {
    device_.defaults().set("appconfig_k", "old");
    const std::string typeError =
        "Error Domain=sdad Code=1 \"error type\" UserInfo={NSLocalizedDescription=error type}";

    EXPECT_EQ(errorOf(std::optional<Setting>()), typeError);
    EXPECT_EQ(errorOf(std::optional<Unencodable>(Unencodable())), typeError);
    EXPECT_EQ(errorOf(std::optional<Unwritable>(Unwritable())), "Error Domain=encoder Code=7 \"(null)\"");
    EXPECT_EQ(errorOf(std::optional<NoText>(NoText())), "none");
    EXPECT_THAT(stored(), UnorderedElementsAre(Pair("appconfig_k", NSUserDefaults::Value("old"))));
}

TEST_F(RecordStore, ReadsPlainTextWithoutACryptor) {
    device_.defaults().set("appconfig_k", encodeJSON(Setting{{"x"}, false, true}));

    EXPECT_EQ(store_.getObject<Setting>("k", nullptr, &Setting::fromJSON), (Setting{{"x"}, false, true}));
    EXPECT_EQ(store_.getObject<Setting>("k", &cryptor_, &Setting::fromJSON), std::nullopt);
}

TEST_F(RecordStore, DeletesByTheTextAsItStands) {
    for (const char* const name :
         {"appconfig_Setting_1", "appconfig_Application_1", "appconfigX", "Setting", "other"})
        device_.defaults().set(name, "value");
    const auto names = [this] {
        std::string all;
        for (const auto& [name, value] : stored()) all += name + " ";
        return all;
    };

    store_.deleteAll("Settings");
    EXPECT_EQ(names(), "Setting appconfigX appconfig_Application_1 appconfig_Setting_1 other ");
    store_.deleteAll("appconfig_Setting");
    EXPECT_EQ(names(), "Setting appconfigX appconfig_Application_1 other ");
    store_.deleteAll();
    EXPECT_EQ(names(), "Setting other ");
}

TEST(Setting, KeepsItsFieldOrderAndRefusesWhatIsNoSetting) {
    const std::string json =
        R"({"iapPolicy":["a","b"],"manageSubscriptionEnabled":false,"reviewAppEnabled":true})";
    EXPECT_EQ(encodeJSON(Setting{{"a", "b"}, false, true}), json);
    EXPECT_EQ(Setting::fromJSON(json), (Setting{{"a", "b"}, false, true}));
    EXPECT_EQ(Setting().iapPolicy.size(), 8u);

    for (const char* const bad :
         {"", "[]", R"({"iapPolicy":["a"],"manageSubscriptionEnabled":1,"reviewAppEnabled":true})",
          R"({"iapPolicy":[1],"manageSubscriptionEnabled":true,"reviewAppEnabled":true})",
          R"({"iapPolicy":["a"],"manageSubscriptionEnabled":true})"})
        EXPECT_EQ(Setting::fromJSON(bad), std::nullopt) << bad;
}

class AESText : public RecordStore {};

TEST_F(AESText, TakesTheModeFromTheOptionsAndRefusesWhatDoesNotFit) {
    const std::string text(64, 'x');
    for (const long long options : {0, 1, 2, 3})
        EXPECT_EQ(aesDecrypt(aesEncrypt(text, key, iv, options).value(), key, iv, options), text) << options;
    EXPECT_EQ(aesEncrypt("not a block", key, iv, 0), std::nullopt);
    EXPECT_EQ(aesEncrypt(text, "short", iv, 1), std::nullopt);
    EXPECT_EQ(aesEncrypt(text, key, "short", 1), std::nullopt);
}

// Sealed with `openssl enc -aes-128-cbc -K … -iv … | base64 -w64`.
TEST_F(AESText, ReadsAndWritesARecordAsTheCommandLineToolDoes) {
    const auto* const record =
        R"({"manageSubscriptionEnabled":true,"reviewAppEnabled":false,"iapPolicy":["Payment is charged to your )"
        R"(account at confirmation of purchase.","It renews — unless cancelled 24 hours before."]})";
    const auto* const sealed = "Z7QlJwNZAcRUJYTOnvAwsc8ejVuTufvRrjJKkvMgB5NnOOO7I244kD2W5XzeQQ/k\r\n"
                               "ACZmDTTvCkNqmAt2tbL0kpqmw9EZf1+GklUG0tGe2DA7fYPoj+qT0CBXvx62+yRP\r\n"
                               "bTF7ubdFP/IA7SrMAleu9YnW9XCDu2olEY0lpc6Rp4CPxjiVNB8YmfOsExy1aKjs\r\n"
                               "SgLeErC+iiBHGxxP4xJdDBgcmFQNvflTDytuETHe7nxsExJu1qj49FhtNGgvgCll";

    EXPECT_EQ(aesEncrypt(record, "kT1vZ0uQmXc9Yb7w", "2uHc9ZsRwJ7pLA==", 1), sealed);
    EXPECT_EQ(aesDecrypt(sealed, "kT1vZ0uQmXc9Yb7w", "2uHc9ZsRwJ7pLA==", 1), record);
}

TEST_F(AESText, RefusesDamageAndAnotherKey) {
    const auto sealed = *aesEncrypt(std::string(200, 'x'), key, iv, 1);
    EXPECT_EQ(aesDecrypt(" " + sealed + "\n", key, iv, 1), std::string(200, 'x'));
    EXPECT_EQ(aesDecrypt(sealed.substr(0, 40), key, iv, 1), std::nullopt);
    EXPECT_EQ(aesDecrypt(sealed, iv, iv, 1), std::nullopt);
    EXPECT_EQ(aesDecrypt("", key, iv, 1), std::nullopt);
}

TEST(AESTextDeathTest, OptionsBeyond32BitsEndTheProcess) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    for (const long long options : {-1LL, 0x1'0000'0000LL})
        EXPECT_DEATH(static_cast<void>(aesEncrypt("x", key, iv, options)),
                     "Corvantile/AESText:[0-9]+: Fatal error");
}

} // namespace
} // namespace corvantile
