#pragma once

#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// A page of memory for a secret: left out of core dumps, wiped at its end.
class SecretPage {
public:
    // Copies `secret`, which is no longer than a page. Throws std::bad_alloc.
    explicit SecretPage(std::string_view secret);
    SecretPage(SecretPage&& other) noexcept;
    SecretPage& operator=(SecretPage&&) = delete;
    ~SecretPage();

    [[nodiscard]] std::string_view text() const { return {page_, size_}; }

private:
    char* page_ = nullptr;
    std::size_t size_ = 0;
};

// The key that seals every entry of a vault, in a file of its own.
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

    // The file still holds this key: it is there and has not been replaced.
    [[nodiscard]] bool isStillIn(const std::filesystem::path& folder) const;

    // Tells one key from another and nothing of the key: it is stored beside what was sealed.
    [[nodiscard]] std::string_view identifier() const;
    [[nodiscard]] std::string_view key() const;

private:
    MasterKey(SecretPage file, FileIdentity identity);

    SecretPage file_;
    FileIdentity identity_;
};

} // namespace corvantile
