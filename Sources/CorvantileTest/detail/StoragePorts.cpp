#include "CorvantileTest/detail/StoragePorts.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace corvantile {

namespace {

class TestKeychain final : public Locksmith {
public:
    TestKeychain(std::shared_ptr<const DeviceLink> link, std::shared_ptr<Console> unreadableReports)
        : link_(std::move(link)), unreadableReports_(std::move(unreadableReports)) {}

    std::optional<KeychainDictionary> load(std::string_view account,
                                           std::string_view service) const override {
        auto finding = link_->device().keychain().find(account, service);
        if (!finding.fault.empty() && unreadableReports_)
            unreadableReports_->print(unreadableEntryLine(account, service, finding.fault));
        return std::move(finding.dictionary);
    }

    void save(const KeychainDictionary& dictionary, std::string_view account,
              std::string_view service) override {
        if (!link_->isCut()) link_->device().keychain().save(dictionary, account, service);
    }

    void update(const KeychainDictionary& dictionary, std::string_view account,
                std::string_view service) override {
        if (!link_->isCut()) link_->device().keychain().update(dictionary, account, service);
    }

    bool remove(std::string_view account, std::string_view service) override {
        return !link_->isCut() && link_->device().keychain().remove(account, service);
    }

private:
    const std::shared_ptr<const DeviceLink> link_;
    const std::shared_ptr<Console> unreadableReports_;
};

class TestUserDefaults final : public NSUserDefaults {
public:
    explicit TestUserDefaults(std::shared_ptr<const DeviceLink> link) : link_(std::move(link)) {}
    ~TestUserDefaults() override { writePending(); }

    std::optional<Value> valueForKey(std::string_view key) const override {
        const std::lock_guard lock(mutex_);
        const auto all = values();
        const auto found = all.find(key);
        if (found == all.end()) return std::nullopt;
        return found->second;
    }

    void setValue(std::optional<Value> value, std::string_view forKey) override {
        const std::lock_guard lock(mutex_);
        pending_.insert_or_assign(std::string(forKey), std::move(value));
        writePending();
    }

    Dictionary dictionaryRepresentation() const override {
        const std::lock_guard lock(mutex_);
        return values();
    }

    bool synchronize() override {
        const std::lock_guard lock(mutex_);
        return writePending();
    }

private:
    // With the mutex held. True when the device has everything.
    bool writePending() const {
        auto& defaults = link_->device().defaults();
        if (link_->isCut() || !defaults.isWritable()) return false;
        for (auto& [key, value] : pending_) defaults.set(key, std::move(value));
        pending_.clear();
        return true;
    }

    Dictionary values() const {
        writePending();
        const auto& defaults = link_->device().defaults();
        auto all = defaults.isReadable() ? defaults.values() : Dictionary();
        for (const auto& [key, value] : pending_) {
            all.erase(key);
            if (value) all.emplace(key, *value);
        }
        return all;
    }

    const std::shared_ptr<const DeviceLink> link_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, std::optional<Value>, std::less<>> pending_; // not on the device yet
};

} // namespace

std::shared_ptr<Locksmith> makeKeychain(std::shared_ptr<const DeviceLink> link,
                                        std::shared_ptr<Console> unreadableReports) {
    return std::make_shared<TestKeychain>(std::move(link), std::move(unreadableReports));
}

std::shared_ptr<NSUserDefaults> makeUserDefaults(std::shared_ptr<const DeviceLink> link) {
    return std::make_shared<TestUserDefaults>(std::move(link));
}

} // namespace corvantile
