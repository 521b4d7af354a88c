#pragma once

#include "Tools/corvantile/ExitCode.hpp"

#include <filesystem>
#include <iosfwd>

// What an app has left in its state folder, for people, or as one JSON object a line. They look and change
// nothing; the app may be running. `failed` when something cannot be read or is wrong. A Refusal when there
// is no such folder.
namespace corvantile::tool {

struct InspectOptions {
    std::filesystem::path state = {};
    bool json = false;
    bool reveal = false; // the keychain's values too
};

// The user defaults: names, sizes and contents, those of records decrypted.
[[nodiscard]] ExitCode showRecords(const InspectOptions& options, std::ostream& out);

// The keychain: services, accounts and the kinds of values.
[[nodiscard]] ExitCode showKeychain(const InspectOptions& options, std::ostream& out);

// The packages of the attribution SDK: what waits, and what was delivered lately.
[[nodiscard]] ExitCode showOutbox(const InspectOptions& options, std::ostream& out);

// What is in order and what is not.
[[nodiscard]] ExitCode showHealth(const InspectOptions& options, std::ostream& out);

} // namespace corvantile::tool
