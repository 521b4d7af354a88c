#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace corvantile {

// The app's small settings, kept by the platform until the app is deleted. A key is any text, the empty one
// too; keys and texts are bytes to it and may contain NUL. Threads: any; a call sees every call that ended
// before it. What another process wrote is seen from the next turn of the main loop on, if not at once.
// Errors: none. While the platform cannot store, values live on in the process; it reports and tries again.
class CORVANTILE_API NSUserDefaults : NonCopyable {
public:
    using Value = std::variant<bool, std::string>;
    using Dictionary = std::map<std::string, Value, std::less<>>;

    virtual ~NSUserDefaults();

    // Those of the installed platform's app.
    [[nodiscard]] static std::shared_ptr<NSUserDefaults> standardUserDefaults();

    // A boolean reads as "1" or "0".
    [[nodiscard]] std::optional<std::string> stringForKey(std::string_view key) const;
    // Of a text, "YES", "true" and "1" are true, in any case; nothing at all is false.
    [[nodiscard]] bool boolForKey(std::string_view key) const;
    void setBool(bool value, std::string_view forKey) { setValue(value, forKey); }
    void removeObjectForKey(std::string_view key) { setValue(std::nullopt, key); }

    [[nodiscard]] virtual std::optional<Value> valueForKey(std::string_view key) const = 0;

    // Survives the end of the process, a violent one too, once the call has returned. No value removes the
    // key.
    virtual void setValue(std::optional<Value> value, std::string_view forKey) = 0;

    // All of the app's keys, and perhaps the system's.
    [[nodiscard]] virtual Dictionary dictionaryRepresentation() const = 0;

    // What was set before survives a power loss too once it has returned true. It waits for the disk.
    virtual bool synchronize() = 0;
};

} // namespace corvantile
