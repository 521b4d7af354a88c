#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <concepts>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace corvantile {

// One JSON object, read key by key; where a key occurs twice, the last one counts. Every reading throws
// NSError where it finds something else than it can take, and the text names the key. Only lent: it ends with
// the call that shows it.
class CORVANTILE_API KeyedDecodingContainer : NonCopyable {
public:
    // Text and nothing else.
    [[nodiscard]] std::string decodeString(std::string_view key) const;
    // A number without a fraction that fits; nullopt where missing or null.
    [[nodiscard]] std::optional<std::int64_t> decodeIntegerIfPresent(std::string_view key) const;

    // Tolerant, for what is written by hand: also 1 and 0, also the texts "true" and "false". False where
    // missing or null.
    [[nodiscard]] bool decodeBoolean(std::string_view key) const;
    // Tolerant: also the integer as text. 0 where missing or null.
    template <std::signed_integral Integer = std::int64_t>
    [[nodiscard]] Integer decodeInteger(std::string_view key) const {
        return static_cast<Integer>(
            tolerantInteger(key, std::numeric_limits<Integer>::min(), std::numeric_limits<Integer>::max()));
    }

private:
    friend class JSONDecoder;
    struct Object; // keeps the JSON library out of this header
    explicit KeyedDecodingContainer(const Object& object) : object_(object) {}

    [[nodiscard]] std::int64_t tolerantInteger(std::string_view key, std::int64_t least,
                                               std::int64_t greatest) const;

    const Object& object_;
};

// Parses JSON text (UTF-8). Errors: NSError; exceptions of `visit` propagate.
class CORVANTILE_API JSONDecoder {
public:
    using Visit = std::function<void(const KeyedDecodingContainer& container)>;

    JSONDecoder() = delete;

    // The text is one object.
    static void decodeObject(std::string_view json, const Visit& visit);
    // The text is an array of objects, visited in their order.
    static void decodeArray(std::string_view json, const Visit& visit);
};

template <class T>
concept Decodable = requires(const KeyedDecodingContainer& container) {
    { T::decode(container) } -> std::same_as<T>;
};

// The record that the text is an object of. Errors: NSError.
template <Decodable Record>
[[nodiscard]] Record decodeJSON(std::string_view json) {
    std::optional<Record> record;
    JSONDecoder::decodeObject(json,
                              [&](const auto& container) { record.emplace(Record::decode(container)); });
    return std::move(*record);
}

} // namespace corvantile
