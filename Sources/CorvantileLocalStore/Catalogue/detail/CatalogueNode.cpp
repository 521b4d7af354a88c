#include "CorvantileLocalStore/Catalogue/detail/CatalogueNode.hpp"

#include <climits>
#include <cstdint>
#include <utility>

namespace corvantile {

namespace {

constexpr std::size_t shownBytes = 40;

std::string shown(const nlohmann::json* value) {
    if (value == nullptr) return "nothing";
    if (value->is_object()) return "an object";
    if (value->is_array()) return "a list";
    auto text = value->dump(-1, ' ', true);
    return text.size() > shownBytes ? text.substr(0, shownBytes) + "…" : text;
}

} // namespace

CatalogueMismatch::CatalogueMismatch(std::string path, std::string wanted, std::string met)
    : keyPath(std::move(path)), expected(std::move(wanted)), found(std::move(met)) {}

CatalogueMismatch::~CatalogueMismatch() = default;

CatalogueNode CatalogueNode::member(const char* key) const {
    const JSON* value = nullptr;
    if (value_ != nullptr) {
        requireObject();
        if (const auto found = value_->find(key); found != value_->end() && !found->is_null())
            value = &*found;
    }
    return {value, this, key, 0};
}

const std::string& CatalogueNode::text() const {
    if (value_ == nullptr || !value_->is_string()) fail("a text");
    return value_->get_ref<const std::string&>();
}

int CatalogueNode::integer() const {
    if (value_ == nullptr || !value_->is_number_integer()) fail("an integer");
    const auto value = value_->get<std::int64_t>();
    if (value < INT_MIN || value > INT_MAX) fail("an integer of moderate size");
    return static_cast<int>(value);
}

std::string CatalogueNode::text(const char* key, std::string_view fallback) const {
    const auto found = member(key);
    return found.isPresent() ? found.text() : std::string(fallback);
}

int CatalogueNode::integer(const char* key, int fallback) const {
    const auto found = member(key);
    return found.isPresent() ? found.integer() : fallback;
}

bool CatalogueNode::boolean(const char* key, bool fallback) const {
    const auto found = member(key);
    if (!found.isPresent()) return fallback;
    if (!found.value_->is_boolean()) found.fail("true or false");
    return found.value_->get<bool>();
}

void CatalogueNode::requireObject() const {
    if (value_ == nullptr || !value_->is_object()) fail("an object");
}

void CatalogueNode::fail(std::string expected) const {
    throw CatalogueMismatch(keyPath(), std::move(expected), shown(value_));
}

std::string CatalogueNode::keyPath() const {
    if (parent_ == nullptr) return "";
    auto path = parent_->keyPath();
    if (*key_ == '\0') return path + "[" + std::to_string(place_) + "]";
    return path.empty() ? key_ : path + "." + key_;
}

} // namespace corvantile
