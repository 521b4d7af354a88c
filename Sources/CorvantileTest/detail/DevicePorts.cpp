#include "CorvantileTest/detail/DevicePorts.hpp"

#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
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

class InMemoryApplication final : public UIApplication {
public:
    std::shared_ptr<UIApplicationDelegate> delegate() const override { return delegate_; }
    void setDelegate(std::shared_ptr<UIApplicationDelegate> delegate) override { delegate_.swap(delegate); }

private:
    std::shared_ptr<UIApplicationDelegate> delegate_;
};

class LinkedDevice final : public UIDevice {
public:
    explicit LinkedDevice(std::shared_ptr<const DeviceLink> link) : link_(std::move(link)) {}
    std::optional<std::string> identifierForVendor() const override {
        return link_->device().vendorIdentifier();
    }
    std::string systemVersion() const override { return link_->device().systemVersion(); }

private:
    const std::shared_ptr<const DeviceLink> link_;
};

class VirtualClock final : public Clock {
public:
    explicit VirtualClock(std::shared_ptr<const DeviceLink> link) : link_(std::move(link)) {}
    Date now() const override { return link_->device().now(); }
    std::chrono::seconds localOffset(Date) const override { return link_->device().timeZoneOffset(); }

private:
    const std::shared_ptr<const DeviceLink> link_;
};

class InMemoryBundle final : public NSBundle {
public:
    InMemoryBundle(std::shared_ptr<const DeviceLink> link, std::string identifier,
                   std::map<std::string, std::string> resources)
        : link_(std::move(link)), identifier_(std::move(identifier)), resources_(std::move(resources)) {}
    std::string bundleIdentifier() const override { return identifier_; }
    std::optional<std::string> resource(std::string_view name, std::string_view extension) const override {
        const auto found = resources_.find(std::string(name).append(".").append(extension));
        if (found == resources_.end()) return std::nullopt;
        return found->second;
    }
    std::optional<std::string> appStoreReceipt() const override { return link_->device().appStoreReceipt(); }

private:
    const std::shared_ptr<const DeviceLink> link_;
    const std::string identifier_;
    const std::map<std::string, std::string> resources_;
};

} // namespace

std::shared_ptr<Locksmith> makeKeychain(std::shared_ptr<const DeviceLink> link,
                                        std::shared_ptr<Console> unreadableReports) {
    return std::make_shared<TestKeychain>(std::move(link), std::move(unreadableReports));
}

std::shared_ptr<NSUserDefaults> makeUserDefaults(std::shared_ptr<const DeviceLink> link) {
    return std::make_shared<TestUserDefaults>(std::move(link));
}

std::shared_ptr<UIApplication> makeApplication() { return std::make_shared<InMemoryApplication>(); }

std::shared_ptr<UIDevice> makeDevice(std::shared_ptr<const DeviceLink> link) {
    return std::make_shared<LinkedDevice>(std::move(link));
}

std::shared_ptr<Clock> makeClock(std::shared_ptr<const DeviceLink> link) {
    return std::make_shared<VirtualClock>(std::move(link));
}

std::shared_ptr<NSBundle> makeBundle(std::shared_ptr<const DeviceLink> link, std::string identifier,
                                     std::map<std::string, std::string> resources) {
    return std::make_shared<InMemoryBundle>(std::move(link), std::move(identifier), std::move(resources));
}

} // namespace corvantile
