#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <string>
#include <string_view>

namespace corvantile {

// Why a keychain refuses, with the phone system's own numbers. A platform may give others: they are errors
// like these, only without a name here.
enum class KeychainStatus : int {
    diskFull = -34,
    io = -36,
    notAvailable = -25291,
    duplicateItem = -25299,
    interactionNotAllowed = -25308, // the device is locked
};

// The domain of every error that a keychain throws; the code is the status.
inline constexpr const char* keychainErrorDomain = "NSOSStatusErrorDomain";

// The text for people is the status's own sentence, then `detail`, which may leave the device in an analytics
// event: no path and nothing of the entry's content belongs in it.
[[nodiscard]] CORVANTILE_API NSError keychainError(KeychainStatus status, std::string_view detail = {});

[[nodiscard]] CORVANTILE_API bool isKeychainError(const NSError& error, KeychainStatus status);

// What a platform prints, when asked to, as a load finds an entry that it cannot read.
[[nodiscard]] CORVANTILE_API std::string
unreadableEntryLine(std::string_view account, std::string_view service, std::string_view reason);

} // namespace corvantile
