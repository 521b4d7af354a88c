#include "CorvantileTest/ScriptedRandom.hpp"

#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

ScriptedRandom::ScriptedRandom(std::shared_ptr<const DeviceLink> link) : link_(std::move(link)) {}
ScriptedRandom::~ScriptedRandom() = default;

void ScriptedRandom::provide(std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    provided_ += bytes;
}

void ScriptedRandom::setFails(bool fails) {
    const std::lock_guard lock(mutex_);
    fails_ = fails;
}

bool ScriptedRandom::copyBytes(unsigned char* bytes, std::size_t count) {
    const std::lock_guard lock(mutex_);
    if (fails_) return false;
    const auto provided = std::min(count, provided_.size());
    std::copy_n(provided_.begin(), provided, bytes);
    provided_.erase(0, provided);
    for (auto i = provided; i < count; ++i) bytes[i] = link_->device().randomByte();
    return true;
}

} // namespace corvantile
