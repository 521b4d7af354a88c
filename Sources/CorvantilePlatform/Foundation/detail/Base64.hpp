#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The standard alphabet, padded with '='.
[[nodiscard]] CORVANTILE_API std::string base64(std::string_view bytes);

// The same in lines of 64 characters with CR LF between them, none after the last.
[[nodiscard]] CORVANTILE_API std::string base64Lines(std::string_view bytes);

// The bytes of either form. Characters outside the alphabet are skipped wherever they stand; nullopt when
// what remains does not fill up groups of four, or goes on after its padding. Bits that fill no byte count
// for nothing.
[[nodiscard]] CORVANTILE_API std::optional<std::string> bytesOfBase64(std::string_view text);

} // namespace corvantile
