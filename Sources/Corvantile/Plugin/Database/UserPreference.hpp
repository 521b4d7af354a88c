#pragma once

#include "Corvantile/Extension/DatabaseManipulating.hpp"
#include "Corvantile/Plugin/Database/UserPreferenceProtocol.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

class StorageKey;

// Owns the device's storage key and user identifier, and encrypts the records with that key.
//
// The key is 64 random bytes as base64, made once and kept in the keychain. When the keychain cannot be read
// another key is made, and records written under the former one read as absent. Until the keychain takes the
// new key, each record that is written tries again to save it; where the keychain turns out to hold a key
// after all, that one is used from then on. The identifier is settled at launch, and reported as loaded
// `loadDelay` later. Held by shared_ptr.
class CORVANTILE_API UserPreference final : public UserPreferenceProtocol,
                                            public DatabaseCryptor,
                                            public std::enable_shared_from_this<UserPreference> {
public:
    static constexpr std::chrono::seconds loadDelay{1};

    explicit UserPreference(std::shared_ptr<DatabaseManipulating> manipulator);
    [[deprecated("Say where records live: UserPreference(manipulator).")]] UserPreference();
    ~UserPreference() override;

    bool didFinishLaunchingWithOptions(UIApplication& application, const LaunchOptions& options) override;

    [[nodiscard]] rx::Observable<bool> isLoaded() override { return isLoadedSubject_.asObservable(); }
    void loadDatabase(const std::string& userID) override;
    void invalidate() override { userID_.reset(); }
    void asyncOpen(Block block) override;

    // Removes every record of the store, when there is a user.
    void deleteAll();

    [[nodiscard]] std::optional<std::string> encrypt(std::string_view text) override;
    [[nodiscard]] std::optional<std::string> decrypt(std::string_view text) override;

private:
    [[nodiscard]] StorageKey& storageKey();
    [[nodiscard]] std::string newIdentifier();
    void loadDatabaseLater(std::string userID);

    const std::shared_ptr<DatabaseManipulating> manipulator_;
    std::optional<std::string> userID_;
    std::unique_ptr<StorageKey> storageKey_; // created on first use
    const rx::ReplaySubject<bool> isLoadedSubject_ = rx::ReplaySubject<bool>::create(1);
};

} // namespace corvantile
