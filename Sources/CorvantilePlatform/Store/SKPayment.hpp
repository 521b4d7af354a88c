#pragma once

#include <string>
#include <utility>

namespace corvantile {

// A wish to buy. Immutable and shared.
class SKPayment {
public:
    explicit SKPayment(std::string productIdentifier, int quantity = 1)
        : productIdentifier_(std::move(productIdentifier)), quantity_(quantity) {}

    [[nodiscard]] const std::string& productIdentifier() const { return productIdentifier_; }
    [[nodiscard]] int quantity() const { return quantity_; }

private:
    std::string productIdentifier_;
    int quantity_;
};

} // namespace corvantile
