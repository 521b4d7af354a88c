#include "CorvantileIAP/detail/ReceiptFields.hpp"

#include "CorvantileIAP/ReceiptInfo.hpp"
#include "CorvantileIAP/detail/StoreDate.hpp"
#include "HostCore/detail/JSON.hpp"

#include <utility>

namespace corvantile {

namespace {

using Json = nlohmann::json;

std::optional<std::int64_t> readInteger(const Json& value) {
    return value.is_string() ? textInteger(value.get_ref<const std::string&>()) : jsonInteger(value);
}

std::optional<bool> readBoolean(const Json& value) {
    if (value.is_boolean()) return value.get<bool>();
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        if (text == "true" || text == "True" || text == "TRUE") return true;
        if (text == "false" || text == "False" || text == "FALSE") return false;
    }
    const auto number = readInteger(value);
    if (number == 0 || number == 1) return *number == 1;
    return std::nullopt;
}

std::optional<Date> readDate(const Json& value) {
    if (value.is_string()) return readStoreDate(value.get_ref<const std::string&>());
    if (value.is_number()) return readStoreMilliseconds(value.get<double>());
    return std::nullopt;
}

} // namespace

std::string shownInProblem(const Json& value) {
    constexpr std::size_t longest = 60;
    if (value.is_structured()) return value.is_array() ? "a list" : "an object";
    auto text = value.dump(-1, ' ', true, Json::error_handler_t::replace); // ASCII alone: cut anywhere
    if (text.size() > longest) text.replace(longest, std::string::npos, "…");
    return text;
}

const Json* ReceiptFields::find(const std::string& key) const {
    const auto found = object_.find(key);
    if (found == object_.end() || found->is_null()) return nullptr;
    if (found->is_string() && found->get_ref<const std::string&>().empty()) return nullptr;
    return &*found;
}

void ReceiptFields::report(std::string_view key, std::string what) const {
    auto where = list_.empty() ? std::string() : std::string(list_) + "[" + std::to_string(row_) + "]";
    if (!key.empty()) where.append(where.empty() ? "" : ".").append(key);
    problems_.push_back({std::move(where), std::move(what)});
}

void ReceiptFields::reportValue(std::string_view key, const char* expected, const Json& value) const {
    report(key, "not " + std::string(expected) + ": " + shownInProblem(value));
}

std::string ReceiptFields::text(const char* key) const {
    const auto* const value = find(key);
    if (value == nullptr) return {};
    if (value->is_string()) return value->get<std::string>();
    if (const auto number = readInteger(*value)) return std::to_string(*number);
    reportValue(key, "a text", *value);
    return {};
}

std::optional<std::int64_t> ReceiptFields::integer(const char* key) const {
    const auto* const value = find(key);
    if (value == nullptr) return std::nullopt;
    const auto number = readInteger(*value);
    if (!number) reportValue(key, "a whole number of 64 bits", *value);
    return number;
}

std::optional<int> ReceiptFields::smallInteger(const char* key) const {
    const auto number = integer(key);
    if (!number) return std::nullopt;
    if (std::in_range<int>(*number)) return static_cast<int>(*number);
    reportValue(key, "a small number", *find(key));
    return std::nullopt;
}

std::optional<bool> ReceiptFields::boolean(const char* key) const {
    const auto* const value = find(key);
    if (value == nullptr) return std::nullopt;
    const auto boolean = readBoolean(*value);
    if (!boolean) reportValue(key, "true or false", *value);
    return boolean;
}

std::optional<Date> ReceiptFields::date(const std::string& key) const {
    bool isThere = false;
    for (const char* const form : {"_ms", "", "_pst"}) {
        const auto* const value = find(key + form);
        if (value == nullptr) continue;
        if (const auto date = readDate(*value)) return date;
        reportValue(key + form, "a date", *value);
        isThere = true;
    }
    return isThere ? std::optional(DecodingDefaults::invalidDate) : std::nullopt;
}

} // namespace corvantile
