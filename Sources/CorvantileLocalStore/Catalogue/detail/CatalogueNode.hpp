#pragma once

#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

namespace corvantile {

// What a catalogue file holds where something else was expected.
class CatalogueMismatch final : public std::exception {
public:
    CatalogueMismatch(std::string keyPath, std::string expected, std::string found);
    ~CatalogueMismatch() override;

    const std::string keyPath;
    const std::string expected;
    const std::string found;
};

// A place in a catalogue file. It borrows the JSON and the place that it was reached from; the way from the
// root is put into words only when something is wrong. A value that is null counts as absent.
class CatalogueNode : NonCopyable {
public:
    using JSON = nlohmann::json;

    explicit CatalogueNode(const JSON& root) : value_(&root) {}

    // For a chain of places that are kept in variables.
    [[nodiscard]] CatalogueNode member(const char* key) const;
    [[nodiscard]] bool isPresent() const { return value_ != nullptr; }

    // Of the value itself; CatalogueMismatch when it is absent or something else.
    [[nodiscard]] const std::string& text() const;
    [[nodiscard]] int integer() const;

    // Of a member, or the fallback where it is absent.
    [[nodiscard]] std::string text(const char* key, std::string_view fallback) const;
    [[nodiscard]] int integer(const char* key, int fallback) const;
    [[nodiscard]] bool boolean(const char* key, bool fallback) const;

    // Calls `use` with each element of the list `key`; an absent list is empty.
    template <class Use>
    void forEach(const char* key, Use use) const {
        const auto list = member(key);
        if (!list.isPresent()) return;
        if (!list.value_->is_array()) list.fail("a list");
        std::size_t place = 0;
        for (const auto& element : *list.value_) use(CatalogueNode(&element, &list, "", place++));
    }

    void requireObject() const;
    [[noreturn]] void fail(std::string expected) const;

private:
    CatalogueNode(const JSON* value, const CatalogueNode* parent, const char* key, std::size_t place)
        : value_(value), parent_(parent), key_(key), place_(place) {}
    [[nodiscard]] std::string keyPath() const;

    const JSON* value_ = nullptr;
    const CatalogueNode* parent_ = nullptr;
    const char* key_ = ""; // empty: `place_` counts
    std::size_t place_ = 0;
};

} // namespace corvantile
