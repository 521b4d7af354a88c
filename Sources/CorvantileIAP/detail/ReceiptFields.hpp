#pragma once

#include "CorvantileIAP/StoreReceipt.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// For sources only: it brings the JSON library along.
namespace corvantile {

// One object of a receipt. Every kind of value is taken as itself and as text, which is how the store writes
// it. null and an empty text are the same as nothing at all; what is of another kind is reported, and counts
// as nothing. Borrows all that it is made of.
class ReceiptFields {
public:
    using Problems = std::vector<ReceiptProblem>;

    // The object is row `row` of `list`; an empty `list` stands for the receipt itself.
    ReceiptFields(const nlohmann::json& object, std::string_view list, std::size_t row, Problems& problems)
        : object_(object), list_(list), row_(row), problems_(problems) {}

    [[nodiscard]] std::string text(const char* key) const;
    [[nodiscard]] std::optional<std::int64_t> integer(const char* key) const;
    [[nodiscard]] std::optional<int> smallInteger(const char* key) const;
    [[nodiscard]] std::optional<bool> boolean(const char* key) const;

    // The first that can be read of `KEY_ms`, `KEY` and `KEY_pst`; the milliseconds are right where the texts
    // disagree. DecodingDefaults::invalidDate when none can; nullopt when there is none.
    [[nodiscard]] std::optional<Date> date(const std::string& key) const;

    void report(std::string_view key, std::string what) const;

private:
    [[nodiscard]] const nlohmann::json* find(const std::string& key) const;
    void reportValue(std::string_view key, const char* expected, const nlohmann::json& value) const;

    const nlohmann::json& object_;
    const std::string_view list_;
    const std::size_t row_;
    Problems& problems_;
};

// For a problem's text: the value as JSON, cut to fit a line.
[[nodiscard]] std::string shownInProblem(const nlohmann::json& value);

} // namespace corvantile
