#include "HostCore/Decoding.hpp"

#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"
#include "HostCore/detail/JSON.hpp"

#include <nlohmann/json.hpp>

namespace corvantile {

namespace {

using JSON = nlohmann::json;

[[noreturn]] void failAt(std::string_view key, const char* expected) {
    throwJSONError("The value of \"" + std::string(key) + "\" is not " + expected + ".");
}

[[noreturn]] void failMissing(std::string_view key) {
    throwJSONError("The value of \"" + std::string(key) + "\" is missing.");
}

JSON parse(std::string_view text) {
    if (isTooDeepJSON(text)) throwJSONError("The JSON is nested too deeply.");
    auto document = JSON::parse(text, nullptr, false);
    if (document.is_discarded()) throwJSONError("The text is no JSON.");
    return document;
}

} // namespace

struct KeyedDecodingContainer::Object {
    // Null where the key is missing or holds null.
    [[nodiscard]] const JSON* value(std::string_view key) const {
        const auto found = members.find(key);
        return found == members.end() || found->is_null() ? nullptr : &*found;
    }

    const JSON& members;
};

std::string KeyedDecodingContainer::decodeString(std::string_view key) const {
    const auto found = object_.members.find(key);
    if (found == object_.members.end()) failMissing(key);
    if (!found->is_string()) failAt(key, "text");
    return found->get_ref<const std::string&>();
}

std::optional<std::int64_t> KeyedDecodingContainer::decodeIntegerIfPresent(std::string_view key) const {
    const auto* const value = object_.value(key);
    if (value == nullptr) return std::nullopt;
    const auto number = jsonInteger(*value);
    if (!number) failAt(key, "a 64-bit integer");
    return number;
}

bool KeyedDecodingContainer::decodeBoolean(std::string_view key) const {
    const auto* const value = object_.value(key);
    if (value == nullptr) return false;
    if (value->is_boolean()) return value->get<bool>();
    if (*value == "true" || *value == 1) return true;
    if (*value == "false" || *value == 0) return false;
    failAt(key, "a boolean");
}

std::int64_t KeyedDecodingContainer::tolerantInteger(std::string_view key, std::int64_t least,
                                                     std::int64_t greatest) const {
    const auto* const value = object_.value(key);
    if (value == nullptr) return 0;
    const auto number =
        value->is_string() ? textInteger(value->get_ref<const std::string&>()) : jsonInteger(*value);
    if (!number || *number < least || *number > greatest) failAt(key, "an integer that fits");
    return *number;
}

void JSONDecoder::decodeObject(std::string_view json, const Visit& visit) {
    const auto document = parse(json);
    if (!document.is_object()) throwJSONError("The JSON is no object.");
    const KeyedDecodingContainer::Object object{document};
    visit(KeyedDecodingContainer(object));
}

void JSONDecoder::decodeArray(std::string_view json, const Visit& visit) {
    const auto document = parse(json);
    if (!document.is_array()) throwJSONError("The JSON is no array.");
    for (const auto& element : document) {
        if (!element.is_object()) throwJSONError("An element of the array is no object.");
        const KeyedDecodingContainer::Object object{element};
        visit(KeyedDecodingContainer(object));
    }
}

} // namespace corvantile
