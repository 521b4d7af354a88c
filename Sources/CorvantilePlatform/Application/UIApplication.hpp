#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <map>
#include <memory>
#include <string>

namespace corvantile {

class UIApplicationDelegate;

// Why the app was launched: texts by key; empty for a plain launch.
using LaunchOptions = std::map<std::string, std::string>;

// The running app. Threads: main.
class CORVANTILE_API UIApplication : NonCopyable {
public:
    virtual ~UIApplication();

    // The application of the installed platform.
    [[nodiscard]] static std::shared_ptr<UIApplication> shared();

    // Owned here until the platform ends or another takes its place; null before the first.
    [[nodiscard]] virtual std::shared_ptr<UIApplicationDelegate> delegate() const = 0;
    virtual void setDelegate(std::shared_ptr<UIApplicationDelegate> delegate) = 0;
};

} // namespace corvantile
