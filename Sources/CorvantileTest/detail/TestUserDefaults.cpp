#include "CorvantileTest/detail/TestUserDefaults.hpp"

#include "CorvantileTest/DeviceDefaults.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"

#include <utility>

namespace corvantile {

TestUserDefaults::TestUserDefaults(std::shared_ptr<const DeviceLink> link) : link_(std::move(link)) {}

TestUserDefaults::~TestUserDefaults() { catchUp(); }

std::optional<NSUserDefaults::Value> TestUserDefaults::valueForKey(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    const auto all = values();
    const auto found = all.find(key);
    if (found == all.end()) return std::nullopt;
    return found->second;
}

void TestUserDefaults::setValue(std::optional<Value> value, std::string_view forKey) {
    const std::lock_guard lock(mutex_);
    unwritten_.insert_or_assign(std::string(forKey), std::move(value));
    catchUp();
}

NSUserDefaults::Dictionary TestUserDefaults::dictionaryRepresentation() const {
    const std::lock_guard lock(mutex_);
    return values();
}

bool TestUserDefaults::synchronize() {
    const std::lock_guard lock(mutex_);
    return catchUp();
}

bool TestUserDefaults::catchUp() const {
    auto& defaults = link_->device().defaults();
    if (link_->isCut() || !defaults.isWritable()) return false;
    for (auto& [key, value] : unwritten_) defaults.set(key, std::move(value));
    unwritten_.clear();
    return true;
}

NSUserDefaults::Dictionary TestUserDefaults::values() const {
    catchUp();
    const auto& defaults = link_->device().defaults();
    auto all = defaults.isReadable() ? defaults.values() : Dictionary();
    for (const auto& [key, value] : unwritten_) {
        all.erase(key);
        if (value) all.emplace(key, *value);
    }
    return all;
}

} // namespace corvantile
