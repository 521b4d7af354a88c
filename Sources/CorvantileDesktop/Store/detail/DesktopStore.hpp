#pragma once

#include "CorvantileDesktop/DesktopOptions.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"

#include <functional>
#include <memory>

namespace corvantile {

class Clock;
class Console;

// The local store of a desktop: its catalogue a file, its memory `store.sqlite` in the state folder (none
// where nothing lasts), its opaque receipt where the bundle looks for it.
[[nodiscard]] std::shared_ptr<LocalStore>
makeDesktopStore(const DesktopOptions& options, std::shared_ptr<Clock> clock,
                 std::shared_ptr<Console> console, std::function<void(std::function<void()>)> inBackground);

} // namespace corvantile
