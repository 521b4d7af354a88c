#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace corvantile {

class DeviceLink;

// Bytes that only look random: every device draws the same ones, and no process on it draws them again.
// Threads: any.
class CORVANTILE_API ScriptedRandom final : public SecureRandom {
public:
    explicit ScriptedRandom(std::shared_ptr<const DeviceLink> link);
    ~ScriptedRandom() override;

    // These come next.
    void provide(std::string_view bytes);
    // Whether there are none to be had from now on.
    void setFails(bool fails);

    bool copyBytes(unsigned char* bytes, std::size_t count) override;

private:
    const std::shared_ptr<const DeviceLink> link_;
    std::mutex mutex_;
    std::string provided_;
    bool fails_ = false;
};

} // namespace corvantile
