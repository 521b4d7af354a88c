#include "CorvantileTest/detail/PlainPorts.hpp"

#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"

#include <utility>

namespace corvantile {

namespace {

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
