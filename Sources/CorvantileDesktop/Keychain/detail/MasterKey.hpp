#pragma once

#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The key that seals every entry of a vault, in a file of its own. Wiped from memory at its end.
class MasterKey {
public:
    static constexpr const char* fileName = "master.key";

    // nullopt: there is none, or what is there is no master key. Throws NSError when others can open the
    // file.
    [[nodiscard]] static std::optional<MasterKey> read(const PrivateFolder& folder);

    // Makes a new one, where `read` found none; a file that is there instead is moved aside, which `report`
    // prints. The caller holds the folder's lock. Throws NSError.
    [[nodiscard]] static MasterKey make(const PrivateFolder& folder,
                                        const std::function<void(const std::string&)>& report);

    MasterKey(MasterKey&& other) noexcept;
    MasterKey& operator=(MasterKey&&) = delete;
    ~MasterKey();

    // The file still holds this key: it is there and has not been replaced.
    [[nodiscard]] bool isStillIn(const std::filesystem::path& folder) const;

    // Tells one key from another and nothing of the key: it is stored beside what was sealed.
    [[nodiscard]] std::string_view identifier() const;
    [[nodiscard]] std::string_view key() const;

private:
    MasterKey(std::string file, FileIdentity identity);

    std::string file_;
    FileIdentity identity_;
};

} // namespace corvantile
