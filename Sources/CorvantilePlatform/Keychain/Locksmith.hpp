#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Keychain/KeychainValue.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The device's keychain: small dictionaries, one entry for each account of a service, kept safely and for
// longer than the app: a reinstalled app finds them again. Account and service are any text, the empty one
// too. Threads: any. Each call is one whole step among all threads and processes that share the keychain, and
// what it wrote outlives a power loss once it has returned; so a writing call may wait for the disk. A call
// that throws has changed nothing that a later load is sure to show.
class CORVANTILE_API Locksmith : NonCopyable {
public:
    virtual ~Locksmith();

    // The entry; nullopt when there is none, and just so when it cannot be read: the device is locked, the
    // bytes are damaged, the key to them is gone.
    [[nodiscard]] virtual std::optional<KeychainDictionary> load(std::string_view account,
                                                                 std::string_view service) const = 0;

    // Adds an entry. Throws NSError (KeychainError.hpp); `duplicateItem` where the account has one already,
    // readable or not, which then stands: of several that add it at once exactly one succeeds.
    virtual void save(const KeychainDictionary& dictionary, std::string_view account,
                      std::string_view service) = 0;

    // Puts the entry in place of the account's former one, if any, as a whole. Throws as `save` does, but for
    // `duplicateItem`.
    virtual void update(const KeychainDictionary& dictionary, std::string_view account,
                        std::string_view service) = 0;

    // Deletes the entry; false when there is none. Throws NSError.
    virtual bool remove(std::string_view account, std::string_view service) = 0;

    // The service that an app uses by default: the bundle identifier of the installed platform.
    [[nodiscard]] static std::string defaultService();

    // The same four on the installed platform's keychain.
    [[nodiscard]] static std::optional<KeychainDictionary>
    loadDataForUserAccount(std::string_view account, std::string_view service = defaultService());
    static void saveData(const KeychainDictionary& dictionary, std::string_view account,
                         std::string_view service = defaultService());
    static void updateData(const KeychainDictionary& dictionary, std::string_view account,
                           std::string_view service = defaultService());
    static bool deleteDataForUserAccount(std::string_view account,
                                         std::string_view service = defaultService());
};

} // namespace corvantile
