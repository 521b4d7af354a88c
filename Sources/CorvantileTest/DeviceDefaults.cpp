#include "CorvantileTest/DeviceDefaults.hpp"

#include <string>
#include <utility>

namespace corvantile {

NSUserDefaults::Dictionary DeviceDefaults::values() const {
    const std::lock_guard lock(mutex_);
    return values_;
}

void DeviceDefaults::set(std::string_view key, std::optional<NSUserDefaults::Value> value) {
    const std::lock_guard lock(mutex_);
    if (value)
        values_.insert_or_assign(std::string(key), std::move(*value));
    else if (const auto found = values_.find(key); found != values_.end())
        values_.erase(found);
}

void DeviceDefaults::removeAll() {
    const std::lock_guard lock(mutex_);
    values_.clear();
}

bool DeviceDefaults::isWritable() const {
    const std::lock_guard lock(mutex_);
    return isWritable_;
}

void DeviceDefaults::setWritable(bool writable) {
    const std::lock_guard lock(mutex_);
    isWritable_ = writable;
}

bool DeviceDefaults::isReadable() const {
    const std::lock_guard lock(mutex_);
    return isReadable_;
}

void DeviceDefaults::setReadable(bool readable) {
    const std::lock_guard lock(mutex_);
    isReadable_ = readable;
}

} // namespace corvantile
