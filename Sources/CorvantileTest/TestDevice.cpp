#include "CorvantileTest/TestDevice.hpp"

#include "CorvantilePlatform/FatalError.hpp"

#include <cstdio>
#include <utility>

namespace corvantile {

namespace {

void requireNoProcess(int running, std::string_view act) {
    if (running == 0) return;
    fatalError(std::to_string(running) + " process(es) still run on the test device that is " +
               std::string(act) + ": end them first.");
}

} // namespace

TestDevice::TestDevice() { nameVendor(); }

TestDevice::~TestDevice() { requireNoProcess(runningProcesses_, "destroyed"); }

Date TestDevice::now() const {
    const std::lock_guard lock(mutex_);
    return setDate_ + (uptime_ - setUptime_);
}

void TestDevice::setNow(Date now) {
    const std::lock_guard lock(mutex_);
    setDate_ = now;
    setUptime_ = uptime_;
}

std::chrono::nanoseconds TestDevice::uptime() const {
    const std::lock_guard lock(mutex_);
    return uptime_;
}

void TestDevice::pass(std::chrono::nanoseconds duration) {
    if (duration.count() < 0) fatalError("Time cannot pass backwards; setNow() sets the wall clock back.");
    const std::lock_guard lock(mutex_);
    uptime_ += duration;
}

void TestDevice::passUntil(std::chrono::nanoseconds uptime) {
    const std::lock_guard lock(mutex_);
    if (uptime > uptime_) uptime_ = uptime;
}

std::chrono::seconds TestDevice::timeZoneOffset() const {
    const std::lock_guard lock(mutex_);
    return timeZoneOffset_;
}

void TestDevice::setTimeZoneOffset(std::chrono::seconds offset) {
    const std::lock_guard lock(mutex_);
    timeZoneOffset_ = offset;
}

std::optional<std::string> TestDevice::vendorIdentifier() const {
    const std::lock_guard lock(mutex_);
    return vendorIdentifier_;
}

void TestDevice::setVendorIdentifier(std::optional<std::string> identifier) {
    const std::lock_guard lock(mutex_);
    vendorIdentifier_ = std::move(identifier);
}

std::string TestDevice::systemVersion() const {
    const std::lock_guard lock(mutex_);
    return systemVersion_;
}

void TestDevice::setSystemVersion(std::string version) {
    const std::lock_guard lock(mutex_);
    systemVersion_ = std::move(version);
}

std::optional<std::string> TestDevice::appStoreReceipt() const {
    const std::lock_guard lock(mutex_);
    return appStoreReceipt_;
}

void TestDevice::setAppStoreReceipt(std::optional<std::string> receipt) {
    const std::lock_guard lock(mutex_);
    appStoreReceipt_ = std::move(receipt);
}

unsigned char TestDevice::randomByte() {
    const std::lock_guard lock(mutex_);
    return static_cast<unsigned char>(random_());
}

void TestDevice::reinstall() {
    const std::lock_guard lock(mutex_);
    requireNoProcess(runningProcesses_, "reinstalled");
    nameVendor();
    defaults_.removeAll();
    appStoreReceipt_.reset();
}

void TestDevice::processLaunched() {
    const std::lock_guard lock(mutex_);
    ++runningProcesses_;
}

void TestDevice::processEnded() {
    const std::lock_guard lock(mutex_);
    --runningProcesses_;
}

// The identifiers are alike on every device, so that a failing test prints the same text twice.
void TestDevice::nameVendor() {
    char text[40];
    std::snprintf(text, sizeof text, "C0FFEE00-ABCD-4EF0-8123-%012X", ++installations_);
    vendorIdentifier_ = text;
}

} // namespace corvantile
