#pragma once

#include "CorvantileIAP/ReceiptInfo.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKProduct.hpp"

#include <memory>
#include <string>
#include <vector>

namespace corvantile {

// A product and what was bought of it.
struct ProductCategory {
    std::string identifier{};             // names its events; empty: the product's own does
    std::shared_ptr<SKProduct> product{}; // never null in what is published
    std::vector<ReceiptInfo> receipts{};  // in any order

    friend bool operator==(const ProductCategory&, const ProductCategory&) = default;
};

[[nodiscard]] CORVANTILE_API std::string describe(const ProductCategory& category);

} // namespace corvantile
