#pragma once

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include <filesystem>

// What an app has left in its state folder. Nothing is changed; the app may be running. `failed` when
// something cannot be read or is wrong. A UsageError when there is no such folder.
namespace corvantile {
class PlayRegistry;
} // namespace corvantile

namespace corvantile::tool {

class CommandOutput;

struct InspectOptions {
    std::filesystem::path app = {};   // empty: the sample app
    std::filesystem::path state = {}; // empty: the app's own, as for `play`
    bool json = false;
    bool reveal = false; // the keychain's values too
};

// The folder to look at; a UsageError when it is missing.
[[nodiscard]] std::filesystem::path inspectedFolder(const InspectOptions& options,
                                                    const PlayRegistry& registry);

// The user defaults: names, sizes and contents, those of records decrypted.
[[nodiscard]] ExitCode showRecords(const InspectOptions& options, const PlayRegistry& registry,
                                   CommandOutput& output);

// The keychain: services, accounts and the kinds of values.
[[nodiscard]] ExitCode showKeychain(const InspectOptions& options, const PlayRegistry& registry,
                                    CommandOutput& output);

// The packages of the attribution SDK: what waits, and what was delivered lately.
[[nodiscard]] ExitCode showOutbox(const InspectOptions& options, const PlayRegistry& registry,
                                  CommandOutput& output);

// What is in order and what is not.
[[nodiscard]] ExitCode showHealth(const InspectOptions& options, const PlayRegistry& registry,
                                  CommandOutput& output);

} // namespace corvantile::tool
