#include "Corvantile/Config/PromoteInstall.hpp"
#include "Corvantile/Extension/AESText.hpp"
#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/Database/Application.hpp"
#include "Corvantile/Plugin/Database/Setting.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::RecordStoreTest {

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

class RecordStore : public ProcessTest {
protected:
    auto stored() { return device_.defaults().values(); }

    UserDefaultsDatabase store_;
    MirrorCryptor cryptor_;
};

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
    EXPECT_THROW(store_.setObject(Unencodable(), "k", &cryptor_), NSError);
    const Date never{std::numeric_limits<double>::infinity()};
    EXPECT_THROW(store_.setObject(Application{never}, "k", &cryptor_), NSError);
    const std::vector<const char*> texts{"a", nullptr};
    EXPECT_THROW(store_.setObject(texts, "k", &cryptor_), NSError);
    const auto isRefused = [&](const auto& nothing) {
        const auto described = [](const NSError& error) { return describe(error); };
        EXPECT_THAT(
            [&] { store_.setObject(nothing, "k", &cryptor_); },
            testing::Throws<NSError>(testing::ResultOf(
                described,
                "Error Domain=sdad Code=1 \"error type\" UserInfo={NSLocalizedDescription=error type}")));
    };
    isRefused(std::optional<Setting>());
    isRefused(nullptr);
    isRefused(texts[1]);
    isRefused(std::optional(texts[1]));
    EXPECT_THAT(stored(), UnorderedElementsAre(Pair("appconfig_k", NSUserDefaults::Value("old"))));
}

TEST_F(RecordStore, TakesWhateverJSONHolds) {
    const auto text = [&](const auto& value) {
        store_.setObject(value, "k", &cryptor_);
        const auto stored = store_.getData("k", &cryptor_);
        return stored.value_or("nothing");
    };
    EXPECT_EQ(text(std::vector<std::string>{"a\"", ""}), R"(["a\"",""])");
    EXPECT_EQ(text(std::vector<std::vector<int>>{{1, -2}, {}}), "[[1,-2],[]]");
    EXPECT_EQ(text(true), "true");
    EXPECT_EQ(text(0.25), "0.25");
    EXPECT_EQ(text("plain"), R"("plain")");
}

TEST_F(RecordStore, ReadsPlainTextWithoutACryptor) {
    device_.defaults().set("appconfig_k", encodeJSON(Setting{{"x"}, false, true}));

    EXPECT_EQ(store_.getObject<Setting>("k", nullptr, &Setting::fromJSON), (Setting{{"x"}, false, true}));
    EXPECT_EQ(store_.getObject<Setting>("k", &cryptor_, &Setting::fromJSON), std::nullopt);

    const auto promotion = [&] {
        return store_.getObject<PromoteInstall>("k", nullptr, &decodeJSON<PromoteInstall>);
    };
    EXPECT_EQ(promotion(), std::nullopt) << "though decoding it throws";
    device_.defaults().set("appconfig_k", encodeJSON(PromoteInstall()));
    EXPECT_EQ(promotion(), PromoteInstall());
}

TEST_F(RecordStore, DeletesByTheTextAsItStands) {
    for (const char* const name : {"appconfig_Setting", "appconfig_Other", "appconfigX", "Setting", "other"})
        device_.defaults().set(name, "value");
    for (const auto& [beginning, left] :
         {std::pair("Settings", 5u), {"appconfig_Setting", 4u}, {"Setting", 3u}, {"", 1u}}) {
        store_.deleteAll(beginning);
        EXPECT_EQ(stored().size(), left) << beginning;
    }
}

TEST(Setting, HasEightTermsByDefaultAndRefusesWhatIsNoSetting) {
    EXPECT_EQ(Setting().iapPolicy.size(), 8u);
    for (const char* const bad :
         {"[]", R"({"iapPolicy":[1],"manageSubscriptionEnabled":true,"reviewAppEnabled":true})",
          R"({"iapPolicy":["a"],"manageSubscriptionEnabled":1,"reviewAppEnabled":true})",
          R"({"iapPolicy":["a"],"manageSubscriptionEnabled":true})"})
        EXPECT_EQ(Setting::fromJSON(bad), std::nullopt) << bad;
}

using AESText = RecordStore;

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

TEST_F(AESText, RefusesDamageAnotherKeyAndWhatNeedsPaddingWithoutIt) {
    const auto sealed = *aesEncrypt(std::string(200, 'x'), key, iv, 1);
    EXPECT_EQ(aesDecrypt(" " + sealed + "\n", key, iv, 1), std::string(200, 'x'));
    EXPECT_EQ(aesDecrypt(sealed.substr(0, 40), key, iv, 1), std::nullopt);
    EXPECT_EQ(aesDecrypt(sealed, iv, iv, 1), std::nullopt);
    EXPECT_EQ(aesDecrypt("", key, iv, 1), std::nullopt);
    EXPECT_EQ(aesEncrypt("not a block", key, iv, 0), std::nullopt);
    EXPECT_EQ(aesEncrypt("caf\xE9", key, iv, 1), std::nullopt) << "what would not be read back";
    EXPECT_EQ(aesEncrypt("text", std::string(16, '\xFF'), iv, 1), std::nullopt);
}

TEST_F(AESText, CompletesAVectorOf15BytesByItsTerminatingZero) {
    const auto sealed = aesEncrypt("text", key, iv.substr(0, 15), 1);
    EXPECT_EQ(sealed, aesEncrypt("text", key, std::string(iv.substr(0, 15)) + '\0', 1));
    EXPECT_EQ(aesDecrypt(sealed.value(), key, iv.substr(0, 15), 1), "text");
    EXPECT_EQ(aesEncrypt("text", key, iv.substr(0, 14), 1), std::nullopt);
}

} // namespace corvantile::RecordStoreTest
