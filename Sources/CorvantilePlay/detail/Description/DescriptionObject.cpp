#include "CorvantilePlay/detail/Description/DescriptionObject.hpp"

#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace corvantile::tool {

namespace {

const nlohmann::json emptyObject = nlohmann::json::object();
const nlohmann::json emptyList = nlohmann::json::array();

std::string placeOf(std::string_view key, std::size_t index) {
    return std::string(key) + "[" + std::to_string(index) + "]";
}

std::string shown(const nlohmann::json& found) {
    if (found.is_object()) return "an object";
    if (found.is_array()) return "a list";
    return found.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

DescriptionObject::DescriptionObject(const nlohmann::json& object, std::string file, std::string path)
    : object_(object), file_(std::move(file)), path_(std::move(path)) {
    if (!object_.is_object()) failType({}, "an object", object_);
}

void DescriptionObject::allow(std::initializer_list<std::string_view> keys) const {
    for (const auto& [key, value] : object_.items())
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            fail({}, unknownName("key", key, Names(keys.begin(), keys.end())));
}

std::string DescriptionObject::text(std::string_view key) const {
    const auto* const found = find(key);
    if (found == nullptr) fail(key, "is missing: expected a text");
    return text(key, {});
}

std::string DescriptionObject::text(std::string_view key, std::string_view otherwise) const {
    const auto* const found = find(key);
    if (found == nullptr) return std::string(otherwise);
    if (!found->is_string()) failType(key, "a text", *found);
    if (found->get_ref<const std::string&>().empty()) fail(key, "expected a text, but it is empty");
    return *found;
}

bool DescriptionObject::boolean(std::string_view key, bool otherwise) const {
    const auto* const found = find(key);
    if (found == nullptr) return otherwise;
    if (!found->is_boolean()) failType(key, "true or false", *found);
    return *found;
}

std::uint64_t DescriptionObject::unsignedInteger(std::string_view key) const {
    const auto* const found = find(key);
    if (found == nullptr) fail(key, "is missing: expected a whole number");
    if (!found->is_number_unsigned()) failType(key, "a whole number", *found);
    return *found;
}

std::optional<double> DescriptionObject::amount(std::string_view key) const {
    const auto* const found = find(key);
    if (found == nullptr) return std::nullopt;
    if (!found->is_number() || found->get<double>() < 0) failType(key, "a number from 0 on", *found);
    return found->get<double>();
}

std::vector<std::string> DescriptionObject::texts(std::string_view key) const {
    std::vector<std::string> texts;
    for (const auto& member : list(key)) {
        if (!member.is_string()) failType(placeOf(key, texts.size()), "a text", member);
        texts.push_back(member);
    }
    return texts;
}

std::map<std::string, std::string> DescriptionObject::textsByName(std::string_view key) const {
    const auto members = object(key);
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : members.object_.items()) texts.emplace(name, members.text(name));
    return texts;
}

std::vector<DescriptionObject> DescriptionObject::objects(std::string_view key) const {
    std::vector<DescriptionObject> objects;
    for (const auto& member : list(key))
        objects.emplace_back(member, file_, pathOf(placeOf(key, objects.size())));
    return objects;
}

DescriptionObject DescriptionObject::object(std::string_view key) const {
    const auto* const found = find(key);
    return {found == nullptr ? emptyObject : *found, file_, pathOf(key)};
}

const nlohmann::json& DescriptionObject::list(std::string_view key) const {
    const auto* const found = find(key);
    if (found == nullptr) return emptyList;
    if (!found->is_array()) failType(key, "a list", *found);
    return *found;
}

const nlohmann::json* DescriptionObject::find(std::string_view key) const {
    const auto found = object_.find(std::string(key));
    return found == object_.end() ? nullptr : &*found;
}

std::string DescriptionObject::pathOf(std::string_view key) const {
    return path_ + (path_.empty() || key.empty() ? "" : ".") + std::string(key);
}

void DescriptionObject::fail(std::string_view key, std::string_view why) const {
    const auto path = pathOf(key);
    throw UsageError(file_ + ": " + (path.empty() ? "" : path + ": ") + std::string(why));
}

void DescriptionObject::failType(std::string_view key, std::string_view expected,
                                 const nlohmann::json& found) const {
    fail(key, "expected " + std::string(expected) + ", but found " + shown(found));
}

} // namespace corvantile::tool
