#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>
#include <utility>

namespace corvantile {

// One consumable product as the host describes it. Immutable.
class CORVANTILE_API ConsumableItem {
public:
    // `value` is the last component of the product's identifier, `title` the text to show for it.
    ConsumableItem(std::string value, std::string title)
        : value_(std::move(value)), title_(std::move(title)) {}

    [[nodiscard]] const std::string& value() const { return value_; }
    [[nodiscard]] const std::string& title() const { return title_; }

    // The store's identifier: the main bundle's, a full stop, and `value`.
    [[nodiscard]] std::string identifier() const;

private:
    std::string value_;
    std::string title_;
};

} // namespace corvantile
