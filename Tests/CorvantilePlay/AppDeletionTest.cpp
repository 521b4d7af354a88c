#include "CorvantilePlay/detail/Session/AppDeletion.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Tests/CorvantilePlay/GoldenState.hpp"
#include "Tests/CorvantilePlay/SampleFolder.hpp"

namespace corvantile::tool::AppDeletionTest {

namespace fs = std::filesystem;

TEST(DeviceDeletion, DeletesAStateFolderAndNothingElse) {
    const SampleFolder folder;
    const auto state = folder.state();
    const auto write = [&](const std::string& name) { folder.write("state/" + name, ""); };
    const auto entries = [&] {
        return std::distance(fs::recursive_directory_iterator(state), fs::recursive_directory_iterator());
    };
    const std::pair<const char*, std::function<void()>> refused[] = {
        {"another file", [&] { write("notes.txt"); }},
        {"a name that only begins like ours", [&] { write("receipt.json"); }},
        {"a file in the keychain's folder", [&] { write("keychain/photo.jpg"); }},
        {"a folder in place of a file", [&] { fs::create_directory(state / "outbox.sqlite"); }},
        {"a link in place of the keychain",
         [&] {
             fs::rename(state / "keychain", folder.app() / "elsewhere");
             fs::create_directory_symlink(folder.app() / "elsewhere", state / "keychain");
         }},
        {"a receipt alone",
         [&] {
             fs::remove_all(state);
             fs::create_directory(state);
             write("receipt");
         }},
    };
    for (const auto& [name, add] : refused) {
        SCOPED_TRACE(name);
        fs::remove_all(state);
        copyGoldenState(state);
        add();
        const auto before = entries();
        EXPECT_THROW(deleteDevice(state), UsageError);
        EXPECT_EQ(entries(), before);
        fs::remove_all(folder.app() / "elsewhere");
    }

    fs::remove_all(state);
    copyGoldenState(state);
    for (const auto* const name :
         {"store.sqlite", "store.sqlite-wal", "receipt", "outbox.sqlite.new", "outbox.sqlite.claim",
          "receipt.12-0.new", "user-defaults.sqlite.set-aside-1-wal", "keychain/master.key.12-0.new"})
        write(name);
    deleteDevice(state);
    EXPECT_TRUE(fs::is_empty(state));
    EXPECT_THAT(deleteDevice(state / "missing"), testing::IsEmpty());
}

} // namespace corvantile::tool::AppDeletionTest
