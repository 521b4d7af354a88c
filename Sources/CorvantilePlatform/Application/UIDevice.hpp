#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <memory>
#include <optional>
#include <string>

namespace corvantile {

// The device the app runs on. Threads: any.
class CORVANTILE_API UIDevice : NonCopyable {
public:
    virtual ~UIDevice();

    // The device of the installed platform.
    [[nodiscard]] static std::shared_ptr<UIDevice> current();

    // An upper-case UUID that lasts until the app is reinstalled; nullopt while the device cannot tell.
    [[nodiscard]] virtual std::optional<std::string> identifierForVendor() const = 0;

    // Numbers with points between them, such as "14.3".
    [[nodiscard]] virtual std::string systemVersion() const = 0;
};

} // namespace corvantile
