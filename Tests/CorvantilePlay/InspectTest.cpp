#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"

#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Output/Consoles.hpp"
#include "Tests/CorvantilePlay/GoldenState.hpp"
#include "Tests/CorvantilePlay/SampleFolder.hpp"

#include <sstream>

namespace corvantile::tool::InspectTest {

namespace fs = std::filesystem;

constexpr const char* settingName = "appconfig_Setting_2F7B6BDA-AEED-4BA3-9DFE-0C3AEDDFC5CB";
constexpr const char* keyAccount = "realm_encryption_key";
constexpr const char* service = "com.example.golden";

using Show = ExitCode (*)(const InspectOptions&, const PlayRegistry&, CommandOutput&);

// What every file is: its permissions, when it was written, its bytes.
using Files = std::map<std::string, std::string>;

class Inspect : public testing::Test {
protected:
    Inspect() { copyGoldenState(state); }

    std::string shown(Show show, ExitCode expected = ExitCode::success, bool json = false,
                      bool reveal = false) {
        std::ostringstream out, errors;
        CommandOutput output({out, errors}, json);
        EXPECT_EQ(show({.state = state, .reveal = reveal}, PlayRegistry::framework(), output), expected)
            << out.str();
        EXPECT_EQ(errors.str().empty(), expected == ExitCode::success) << errors.str();
        return out.str();
    }
    void store(std::optional<NSUserDefaults::Value> value, std::string_view name) {
        defaults().setValue(std::move(value), name);
    }
    SQLiteUserDefaults defaults() {
        return SQLiteUserDefaults({state / "user-defaults.sqlite", std::make_shared<SilentConsole>(), {}});
    }
    Files files() {
        Files files;
        for (const auto& entry : fs::recursive_directory_iterator(state)) {
            std::ostringstream text;
            text << static_cast<int>(entry.status().permissions()) << ' '
                 << entry.last_write_time().time_since_epoch().count() << ' ';
            if (entry.is_regular_file()) text << std::ifstream(entry.path()).rdbuf();
            files[entry.path().string()] = text.str();
        }
        return files;
    }

    const SampleFolder folder_;
    const fs::path state = folder_.state();
};

TEST_F(Inspect, ShowsEveryRecordDecryptedWhereItCanBe) {
    store("AAAA", "appconfig_Application_other");
    store(true, "flag");
    EXPECT_EQ(
        shown(showRecords, ExitCode::failed, true),
        R"({"kind":"format","format":"corvantile","version":1})"
        "\n"
        R"({"kind":"record","name":"appconfig_Application_2F7B6BDA-AEED-4BA3-9DFE-0C3AEDDFC5CB","bytes":64,)"
        R"("record":{"updatedTime":817087042.6386497}})"
        "\n"
        R"({"kind":"record","name":"appconfig_Application_other","bytes":4,)"
        R"("error":"it is damaged, or was never sealed"})"
        "\n"
        R"({"kind":"record","name":"appconfig_Setting_2F7B6BDA-AEED-4BA3-9DFE-0C3AEDDFC5CB","bytes":130,)"
        R"("record":{"iapPolicy":["one","two"],)"
        R"("manageSubscriptionEnabled":true,"reviewAppEnabled":false}})"
        "\n"
        R"({"kind":"record","name":"appconfig_uuidKey","bytes":64,"record":"2F7B6BDA-AEED-4BA3-9DFE-0C3AEDDFC5CB"})"
        "\n"
        R"({"kind":"record","name":"flag","bytes":1,"value":true})"
        "\n");
    EXPECT_THAT(shown(showRecords, ExitCode::failed),
                HasSubstr("appconfig_uuidKey  64 bytes\n  \"2F7B6BDA-AEED-4BA3-9DFE-0C3AEDDFC5CB\"\n"));
}

TEST_F(Inspect, ShowsSecretsOfTheKeychainOnlyWhenAsked) {
    EXPECT_EQ(shown(showKeychain), "com.example.golden  firstDate\n  firstDate: date\n"
                                   "com.example.golden  realm_encryption_key\n  key: text\n");
    EXPECT_THAT(
        shown(showKeychain, ExitCode::success, true, true),
        HasSubstr(
            R"("account":"firstDate","values":{"firstDate":{"type":"date","value":"2026-11-23T00:00:00Z)"));
    EXPECT_THAT(shown(showKeychain, ExitCode::success, false, true), HasSubstr("key: text \"LYd2Kvu"));
}

TEST_F(Inspect, ChangesNothingAndSeesWhatARunningAppHasJustSet) {
    auto running = defaults();
    running.setBool(true, "just set");
    const auto before = files();

    EXPECT_THAT(shown(showRecords), HasSubstr("just set"));
    shown(showKeychain);
    shown(showHealth);

    EXPECT_EQ(files(), before);
}

TEST_F(Inspect, CopiesNoMasterKeyAndWritesNoEntry) {
    const StateCopy copy(state);
    Vault vault(copy.keychain());

    EXPECT_FALSE(fs::exists(copy.keychain().folder / "master.key"));
    EXPECT_TRUE(vault.load(keyAccount, service));
    EXPECT_THROW(vault.update({{"key", 1}}, keyAccount, service), NSError);
}

TEST_F(Inspect, SaysWhatIsWrong) {
    const auto vault = [&] { return Vault({.folder = state / "keychain"}); };
    const auto setKey = [&](KeychainValue key) {
        vault().update({{"key", std::move(key)}}, keyAccount, service);
    };
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { fs::permissions(state, fs::perms::all); }, "other users get in; chmod go-w"},
        {[&] { fs::permissions(state / "keychain/master.key", fs::perms::all); },
         "Others can open master.key"},
        {[&] { vault().remove(keyAccount, service); },
         "wrong  appconfig_uuidKey: the keychain holds no storage key"},
        {[&] { setKey(std::string(88, 'k')); },
         "wrong  appconfig_uuidKey: it was sealed under another storage key, or is damaged"},
        {[&] { setKey(1); }, "wrong  appconfig_uuidKey: the storage key in the keychain cannot be read"},
        {[&] { store(defaults().stringForKey("appconfig_uuidKey"), settingName); },
         "it decrypts, but is not the record that its name says"},
        {[&] { fs::resize_file(state / "user-defaults.sqlite", 5000); }, "wrong  user defaults: "},
        {[&] { folder_.write("state/keychain/vault.sqlite.set-aside-1", ""); }, "was set aside"},
        {[&] { folder_.write("state/vendor-identifier", "short\n"); }, "wrong  vendor identifier: "},
        {[&] { fs::create_directory(state / "user-defaults.sqlite-shm"); }, "it is in the way of a file"},
        {[&] { fs::create_directory(state / "keychain/vault.sqlite.new"); }, "it is in the way of a file"},
    };
    EXPECT_THAT(shown(showHealth), HasSubstr("ok     user defaults: 3 values"));
    for (const auto& [damage, finding] : cases) {
        fs::remove_all(state);
        copyGoldenState(state);
        damage();
        EXPECT_THAT(shown(showHealth, ExitCode::failed), HasSubstr(finding));
    }
    fs::remove_all(state);
    fs::create_directory(state);
    EXPECT_EQ(shown(showRecords) + shown(showKeychain), "There are no records.\nThe keychain is empty.\n");
    EXPECT_THAT(shown(showHealth), HasSubstr("vendor identifier: there is none yet"));
    EXPECT_TRUE(fs::is_empty(state));
}

} // namespace corvantile::tool::InspectTest
