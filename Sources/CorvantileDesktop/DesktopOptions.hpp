#pragma once

#include "CorvantileDesktop/Ads/LocalAds.hpp"
#include "CorvantileDesktop/DesktopFeatures.hpp"
#include "CorvantilePlatform/Export.hpp"

#if CORVANTILE_DESKTOP_OUTBOX
#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#endif
#if CORVANTILE_DESKTOP_STORE
#include "CorvantileDesktop/Store/DesktopStoreOptions.hpp"
#endif

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace corvantile {

class Console;
struct Ports;

// What a host decides about its desktop platform. The defaults suit a development machine.
struct DesktopOptions {
    // Names the app, also in the default state folder: one file name.
    std::string bundleIdentifier = "corvantile.desktop";

    // What outlives the process, made when first needed. Two processes may share one. Empty: the default.
    std::filesystem::path stateFolder = {};

    // The files of the app's bundle. Empty: a bundle without resources.
    std::filesystem::path resourceFolder = {};

    std::string systemVersion = "14.3";

    // Where the console writes. Borrowed: stays open until the platform has ended.
    int consoleDescriptor = 1;

    // Prints a line for each load that finds an entry in the keychain but cannot read it; else only for the
    // first that is damaged, and the first whose master key is gone.
    bool reportsUnreadableEntries = false;

    // Replaces the console on `consoleDescriptor`, unless null.
    std::shared_ptr<Console> console = nullptr;

#if CORVANTILE_DESKTOP_HTTP
    // Where requests to these origins go; see HTTPRoutes.
    std::map<std::string, std::string> httpRoutes = {};
#endif

    AdsOptions ads = {};

#if CORVANTILE_DESKTOP_OUTBOX
    AdjustOptions adjust = {};
#endif

#if CORVANTILE_DESKTOP_STORE
    DesktopStoreOptions store = {};
#endif

    // Replaces or wraps ports before the app sees them. The platform's own parts keep using each other as
    // they were made. May be null.
    std::function<void(Ports& ports)> decorate = nullptr;
};

// `corvantile/BUNDLEIDENTIFIER` in the user's folder for state ($XDG_STATE_HOME, else ~/.local/state). Empty
// when there is no such user: then nothing lasts.
[[nodiscard]] CORVANTILE_API std::filesystem::path defaultStateFolder(std::string_view bundleIdentifier);

} // namespace corvantile
