#pragma once

#include "LocalStore/LocalStore.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Platform.hpp"
#include "Platform/Store/SKPaymentTransaction.hpp"
#include "TestPlatform/TestDevice.hpp"
#include "TestPlatform/TestPlatform.hpp"

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <fstream>
#endif

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvantile {

constexpr const char* contractCatalogue = R"({"version": {"major": 1}, "products": [
    {"productID": "gold", "type": "Consumable", "displayPrice": "1"},
    {"productID": "silver", "type": "NonConsumable", "displayPrice": "2"}]})";

// A local store as the payment queue's contract sees it, on a process that `Process` launches.
template <class Process>
class LocalStoreHarness {
public:
    LocalStoreHarness() {
        store().buyElsewhere("silver"); // what a restore gives back
        for (const auto& transaction : store().transactions()) store().finish(transaction.number);
    }

    [[nodiscard]] SKPaymentQueue& queue() { return *process_.platform().ports().paymentQueue; }
    [[nodiscard]] StoreRequests& requests() { return *process_.platform().ports().storeRequests; }
    [[nodiscard]] std::shared_ptr<DispatchQueue> mainQueue() {
        return process_.platform().ports().queues->main();
    }
    [[nodiscard]] bool runUntil(const std::function<bool()>& done) { return process_.runUntil(done); }
    void settle() {
        // What runs may post what follows: no chain here is longer.
        for (int round = 0; round < 20; ++round) {
            bool hasRun = false;
            mainQueue()->async([&] { hasRun = true; });
            static_cast<void>(runUntil([&] { return hasRun; }));
        }
    }
    void relaunch() { process_.relaunch(); }

    void purchase(const std::vector<std::string>& products) {
        for (const auto& product : products) store().buyElsewhere(product);
    }
    void failNextPayment() { store().failNextPayment("gold", SKErrorCode::paymentCancelled); }
    void holdNextPayment() { store().holdNextPayment("gold"); }
    void failNextRestore() { store().failRequests(1, SKErrorCode::paymentCancelled); }
    void failNextProducts() { store().failRequests(1, SKErrorCode::unknown); }
    void promote(const std::string& identifier) { store().promote(identifier); }

private:
    LocalStore& store() { return process_.store(); }

    Process process_;
};

class TestStoreProcess {
public:
    [[nodiscard]] Platform& platform() { return *platform_; }
    [[nodiscard]] LocalStore& store() { return platform_->localStore(); }
    [[nodiscard]] bool runUntil(const std::function<bool()>& done) { return platform_->runUntil(done); }
    void relaunch() { platform_ = TestPlatform::relaunch(std::move(platform_)); }

private:
    static TestOptions options() {
        TestOptions options;
        options.localStore = TestStoreOptions{.catalogue = contractCatalogue};
        return options;
    }

    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_ = TestPlatform::launch(device_, options());
};

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
class DesktopStoreProcess {
public:
    DesktopStoreProcess() {
        std::ofstream(folder_.path() / "catalogue.storekit") << contractCatalogue;
        relaunch();
    }
    [[nodiscard]] Platform& platform() { return *platform_; }
    [[nodiscard]] LocalStore& store() { return platform_->store(); }
    [[nodiscard]] bool runUntil(const std::function<bool()>& done) {
        return platform_->runMainLoopUntil(done, std::chrono::seconds(10));
    }
    void relaunch() {
        platform_.reset();
        DesktopOptions options{.stateFolder = folder_.path() / "state"};
        options.store.catalogue = folder_.path() / "catalogue.storekit";
        platform_ = std::make_unique<DesktopPlatform>(std::move(options));
    }

private:
    TemporaryFolder folder_;
    std::unique_ptr<DesktopPlatform> platform_;
};
#endif

} // namespace corvantile
