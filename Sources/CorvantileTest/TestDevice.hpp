#pragma once

#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileTest/DeviceDefaults.hpp"
#include "CorvantileTest/DeviceKeychain.hpp"
#include "CorvantileTest/DeviceStore.hpp"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <string>

namespace corvantile {

// A phone in memory: what survives the end of a process. Launch any number of processes on it, one after the
// other or several at once (TestPlatform::launch); they must all have ended before the device does.
// Time stands still until a test lets it pass. Threads: any.
class CORVANTILE_API TestDevice : NonCopyable {
public:
    // Every device begins at 2024-01-02 03:04:05 UTC, in a time zone without offset.
    static constexpr Date startDate = Date::fromUnixSeconds(1704164645);

    TestDevice();
    ~TestDevice();

    [[nodiscard]] Date now() const;
    // Changes the wall clock alone, as a person or the network would: timers do not notice.
    void setNow(Date now);

    // How long the device has run. Timers of every process on it follow this clock.
    [[nodiscard]] std::chrono::nanoseconds uptime() const;
    // Both clocks move on while no process runs an item: the app is suspended, or not launched at all. What
    // fell due meanwhile runs, late, when its process runs next. TestPlatform::advance runs it in time.
    void pass(std::chrono::nanoseconds duration);
    // The same up to a point of `uptime`; nothing when it is already over.
    void passUntil(std::chrono::nanoseconds uptime);

    // What local time is ahead of UTC, at every date.
    [[nodiscard]] std::chrono::seconds timeZoneOffset() const;
    void setTimeZoneOffset(std::chrono::seconds offset);

    // An upper-case UUID; nullopt once a test has set that the device cannot tell.
    [[nodiscard]] std::optional<std::string> vendorIdentifier() const;
    void setVendorIdentifier(std::optional<std::string> identifier);

    [[nodiscard]] std::string systemVersion() const;
    void setSystemVersion(std::string version);

    // The store's receipt for the app, opaque bytes; nullopt, as at first, while there is none.
    [[nodiscard]] std::optional<std::string> appStoreReceipt() const;
    void setAppStoreReceipt(std::optional<std::string> receipt);

    // The app's user defaults.
    [[nodiscard]] DeviceDefaults& defaults() { return defaults_; }

    // The keychain, which outlives the app.
    [[nodiscard]] DeviceKeychain& keychain() { return keychain_; }

    // The store, which outlives the app as well.
    [[nodiscard]] DeviceStore& store() { return store_; }
    // What a local store remembers.
    [[nodiscard]] StoreShelf& storeShelf() { return storeShelf_; }

    // The next of the bytes that look random, the same ones on every device.
    [[nodiscard]] unsigned char randomByte();

    // Deletes the app and installs it afresh: a new vendor identifier, no user defaults, no receipt. Fatal
    // while a process runs; TestPlatform::reinstall ends it first.
    void reinstall();

private:
    friend class TestPlatform;
    void processLaunched();
    void processEnded();
    void nameVendor();

    mutable std::mutex mutex_;
    Date setDate_ = startDate; // the wall clock when it was last set, at setUptime_
    std::chrono::nanoseconds setUptime_{0};
    std::chrono::nanoseconds uptime_{0};
    std::chrono::seconds timeZoneOffset_{0};
    std::uint32_t installations_ = 0;
    std::optional<std::string> vendorIdentifier_;
    std::string systemVersion_ = "17.2";
    std::optional<std::string> appStoreReceipt_;
    std::mt19937_64 random_;
    int runningProcesses_ = 0;
    DeviceDefaults defaults_;
    DeviceKeychain keychain_;
    DeviceStore store_;
    StoreShelf storeShelf_;
};

} // namespace corvantile
