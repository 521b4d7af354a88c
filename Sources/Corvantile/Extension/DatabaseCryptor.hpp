#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// Turns the text of a record into what is stored, and back. Threads: those of the record store's callers.
class CORVANTILE_API DatabaseCryptor {
public:
    static constexpr std::string_view typeName = "DatabaseCryptor";

    DatabaseCryptor() = default;
    DatabaseCryptor(const DatabaseCryptor&) = delete;
    DatabaseCryptor& operator=(const DatabaseCryptor&) = delete;
    virtual ~DatabaseCryptor();

    // nullopt when it cannot be done: the wrong key, damaged text.
    [[nodiscard]] virtual std::optional<std::string> encrypt(std::string_view text) = 0;
    [[nodiscard]] virtual std::optional<std::string> decrypt(std::string_view text) = 0;
};

} // namespace corvantile
