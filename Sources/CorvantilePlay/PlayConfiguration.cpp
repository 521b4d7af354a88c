#include "CorvantilePlay/PlayConfiguration.hpp"

#include "CorvantilePlay/detail/Description/ConfigurationObject.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace corvantile {

namespace {

using JSON = std::shared_ptr<const nlohmann::json>;
using Object = PlayConfiguration::Object;

std::string shown(const nlohmann::json& found) {
    if (found.is_object()) return "an object";
    if (found.is_array()) return "a list";
    return found.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string pathOf(const Object& object, std::string_view key) {
    return object.path + (object.path.empty() || key.empty() ? "" : ".") + std::string(key);
}

std::string pathOf(const Object& object, std::string_view key, std::size_t index) {
    return pathOf(object, key) + "[" + std::to_string(index) + "]";
}

[[noreturn]] void failAt(const Object& object, const std::string& path, std::string_view why) {
    throw tool::UsageError(object.file + ": " + (path.empty() ? "" : path + ": ") + std::string(why));
}

[[noreturn]] void failType(const Object& object, const std::string& path, std::string_view expected,
                           const nlohmann::json& found) {
    failAt(object, path, "expected " + std::string(expected) + ", but found " + shown(found));
}

// Null when there is no such member.
const nlohmann::json* find(const Object& object, std::string_view key) {
    const auto found = object.json->find(std::string(key));
    return found == object.json->end() ? nullptr : &*found;
}

const nlohmann::json& require(const Object& object, std::string_view key, const std::string& expected) {
    const auto* const found = find(object, key);
    if (found == nullptr) failAt(object, pathOf(object, key), "is missing: expected " + expected);
    return *found;
}

std::string textOf(const Object& object, std::string_view key, const nlohmann::json& found) {
    if (!found.is_string()) failType(object, pathOf(object, key), "a text", found);
    auto text = found.get<std::string>();
    if (text.empty()) failAt(object, pathOf(object, key), "expected a text, but it is empty");
    return text;
}

// Empty when there is no such member.
const nlohmann::json& listOf(const Object& object, std::string_view key) {
    static const auto empty = nlohmann::json::array();
    const auto* const found = find(object, key);
    if (found == nullptr) return empty;
    if (!found->is_array()) failType(object, pathOf(object, key), "a list", *found);
    return *found;
}

PlayConfiguration memberOf(const Object& object, const nlohmann::json& json, std::string path) {
    return PlayConfiguration(
        std::make_shared<Object>(Object{JSON(object.json, &json), object.file, std::move(path)}));
}

} // namespace

PlayConfiguration::PlayConfiguration(std::shared_ptr<const Object> object) : object_(std::move(object)) {
    if (!object_->json->is_object()) failType(*object_, object_->path, "an object", *object_->json);
}

void PlayConfiguration::allow(std::initializer_list<std::string_view> keys) const {
    for (const auto& [key, value] : object_->json->items())
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            fail({}, tool::unknownName("key", key, tool::Names(keys.begin(), keys.end())));
}

bool PlayConfiguration::has(std::string_view key) const { return find(*object_, key) != nullptr; }

std::string PlayConfiguration::text(std::string_view key) const {
    return textOf(*object_, key, require(*object_, key, "a text"));
}

std::string PlayConfiguration::text(std::string_view key, std::string_view otherwise) const {
    const auto* const found = find(*object_, key);
    return found == nullptr ? std::string(otherwise) : textOf(*object_, key, *found);
}

bool PlayConfiguration::boolean(std::string_view key, bool otherwise) const {
    const auto* const found = find(*object_, key);
    if (found == nullptr) return otherwise;
    if (!found->is_boolean()) failType(*object_, pathOf(*object_, key), "true or false", *found);
    return *found;
}

std::uint64_t PlayConfiguration::unsignedInteger(std::string_view key) const {
    const auto& found = require(*object_, key, "a whole number");
    if (!found.is_number_unsigned()) failType(*object_, pathOf(*object_, key), "a whole number", found);
    return found;
}

std::optional<double> PlayConfiguration::amount(std::string_view key) const {
    const auto* const found = find(*object_, key);
    if (found == nullptr) return std::nullopt;
    if (!found->is_number() || found->get<double>() < 0)
        failType(*object_, pathOf(*object_, key), "a number from 0 on", *found);
    return found->get<double>();
}

std::vector<std::string> PlayConfiguration::texts(std::string_view key) const {
    std::vector<std::string> texts;
    for (const auto& member : listOf(*object_, key)) {
        if (!member.is_string()) failType(*object_, pathOf(*object_, key, texts.size()), "a text", member);
        texts.push_back(member);
    }
    return texts;
}

std::map<std::string, std::string> PlayConfiguration::textsByName(std::string_view key) const {
    const auto members = object(key);
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : members.object_->json->items()) texts.emplace(name, members.text(name));
    return texts;
}

std::vector<PlayConfiguration> PlayConfiguration::objects(std::string_view key) const {
    std::vector<PlayConfiguration> objects;
    for (const auto& member : listOf(*object_, key))
        objects.push_back(memberOf(*object_, member, pathOf(*object_, key, objects.size())));
    return objects;
}

PlayConfiguration PlayConfiguration::object(std::string_view key) const {
    static const auto empty = nlohmann::json::object();
    const auto* const found = find(*object_, key);
    return memberOf(*object_, found == nullptr ? empty : *found, pathOf(*object_, key));
}

std::filesystem::path PlayConfiguration::folder() const {
    return std::filesystem::path(object_->file).parent_path();
}

void PlayConfiguration::fail(std::string_view key, std::string_view why) const {
    failAt(*object_, pathOf(*object_, key), why);
}

} // namespace corvantile
