#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The app's own folder of resources. Threads: any.
class CORVANTILE_API NSBundle : NonCopyable {
public:
    virtual ~NSBundle();

    // The bundle of the installed platform's app.
    [[nodiscard]] static std::shared_ptr<NSBundle> main();

    // Empty when it has none.
    [[nodiscard]] virtual std::string bundleIdentifier() const = 0;

    // The bytes of the resource `name`.`extension`; nullopt when the bundle has none or it cannot be read.
    [[nodiscard]] virtual std::optional<std::string> resource(std::string_view name,
                                                              std::string_view extension) const = 0;

    // The store's receipt for this app: opaque bytes. nullopt when there is none or it cannot be read.
    [[nodiscard]] virtual std::optional<std::string> appStoreReceipt() const = 0;
};

} // namespace corvantile
