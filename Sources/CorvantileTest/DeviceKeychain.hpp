#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"

#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvantile {

// The keychain as a test device keeps it, for every process and through every reinstall. A test looks at what
// lasts, plays another process that reads and writes, and takes reading or writing away. Threads: any.
class CORVANTILE_API DeviceKeychain final : public Locksmith {
public:
    struct Entry {
        std::string service;
        std::string account;
        KeychainDictionary dictionary;
        bool isReadable = true;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    ~DeviceKeychain() override;

    // By service and account, the unreadable ones too, also while locked.
    [[nodiscard]] std::vector<Entry> entries() const;
    void removeAll();

    // While it is locked, every account reads as absent, and everything else is refused.
    void setLocked(bool locked);
    [[nodiscard]] bool isLocked() const;
    // Locks it for one load: it is open again when the same process then saves.
    void lockForNextLoad();

    // Spoils the entry, or puts a spoilt one there: loads do not find it, a save does, an update replaces it.
    void makeUnreadable(std::string_view account, std::string_view service);

    // The next save (the next update) is refused, whatever it would add. Several calls refuse as many.
    void denyNextSave(KeychainStatus status = KeychainStatus::notAvailable);
    void denyNextUpdate(KeychainStatus status = KeychainStatus::notAvailable);

    // What a load finds; without a dictionary, why an entry does not read, or nothing when there is none.
    struct Finding {
        std::optional<KeychainDictionary> dictionary = std::nullopt;
        std::string_view fault = {};
    };
    [[nodiscard]] Finding find(std::string_view account, std::string_view service) const;

    [[nodiscard]] std::optional<KeychainDictionary> load(std::string_view account,
                                                         std::string_view service) const override;
    void save(const KeychainDictionary& dictionary, std::string_view account,
              std::string_view service) override;
    void update(const KeychainDictionary& dictionary, std::string_view account,
                std::string_view service) override;
    bool remove(std::string_view account, std::string_view service) override;

private:
    struct Content {
        KeychainDictionary dictionary;
        bool isReadable = true;
    };
    using Name = std::pair<std::string, std::string>; // service, account
    using Denials = std::deque<KeychainStatus>;

    void requireUnlocked() const;

    mutable std::mutex mutex_;
    std::map<Name, Content> entries_;
    mutable bool isLocked_ = false;
    mutable bool opensAfterLoad_ = false;
    Denials deniedSaves_;
    Denials deniedUpdates_;
};

} // namespace corvantile
