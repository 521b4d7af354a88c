#pragma once

#include "Corvantile/Extension/Encodable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace corvantile {

// Turns the text of a record into what is stored, and back. Threads: those of the record store's callers.
class CORVANTILE_API DatabaseCryptor : NonCopyable {
public:
    static constexpr std::string_view typeName = "DatabaseCryptor";

    virtual ~DatabaseCryptor();

    // nullopt when it cannot be done: the wrong key, damaged text.
    [[nodiscard]] virtual std::optional<std::string> encrypt(std::string_view text) = 0;
    [[nodiscard]] virtual std::optional<std::string> decrypt(std::string_view text) = 0;
};

// A store of records: JSON text by key, encrypted on its way in. Plain text is never written, though plain
// text from another writer can be read. Cryptors are borrowed for the call. Threads: one at a time.
class CORVANTILE_API DatabaseManipulating : NonCopyable {
public:
    static constexpr std::string_view typeName = "DatabaseManipulating";
    // What every stored key begins with, before an underscore and the caller's key.
    static constexpr std::string_view prefix = "appconfig";

    virtual ~DatabaseManipulating();

    // Throws NSError "sdad" / 1 when there is no value (null included) or its type has no encoder, and
    // whatever the encoder throws. A value that cannot be encrypted, or comes without a cryptor, removes the
    // key instead.
    template <class T>
    void setObject(const T& value, std::string_view key, DatabaseCryptor* with) {
        if constexpr (std::is_convertible_v<const T&, const char*>) requireText(value);
        if constexpr (Encodable<T>)
            setText(toString(value), key, with);
        else
            throwTypeError();
    }
    template <class T>
    void setObject(const std::optional<T>& value, std::string_view key, DatabaseCryptor* with) {
        if (!value) throwTypeError();
        setObject(*value, key, with);
    }

    // `decoding`: from the record's JSON to a T or an optional T; may throw. nullopt when nothing is stored,
    // or what is stored cannot be read, decrypted or decoded.
    template <class T, class Decoding>
    [[nodiscard]] std::optional<T> getObject(std::string_view key, DatabaseCryptor* with,
                                             Decoding decoding) const {
        try {
            if (const auto data = getData(key, with)) return decoding(*data);
        } catch (...) {
            // A record that cannot be read counts as absent, whatever a store or a decoder of the host
            // throws.
        }
        return std::nullopt;
    }

    [[nodiscard]] virtual std::optional<std::string> getData(std::string_view key,
                                                             DatabaseCryptor* with) const = 0;

    // Removes every key that begins with the text as it stands; no prefix is added. The empty text stands for
    // `prefix`, which also takes keys of others that happen to begin so.
    virtual void deleteAll(std::string_view with) = 0;
    void deleteAll() { deleteAll({}); }

private:
    // No text: nothing is touched.
    virtual void setText(const std::optional<std::string>& text, std::string_view key,
                         DatabaseCryptor* with) = 0;
    static void requireText(const char* text) {
        if (text == nullptr) throwTypeError();
    }
    [[noreturn]] static void throwTypeError();
};

} // namespace corvantile
