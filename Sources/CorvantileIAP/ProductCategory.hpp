#pragma once

#include "CorvantileIAP/ReceiptInfo.hpp"
#include "CorvantileIAP/StoreReceipt.hpp"
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

// A product whose purchases count.
struct ReceiptProduct {
    std::string identifier{};
    std::string category{};               // as in ProductCategory
    std::shared_ptr<SKProduct> product{}; // null until the store has returned it
};

struct CategorizedReceipts {
    std::vector<ProductCategory> categories{}; // in the catalogue's order; none without a record
    std::vector<ReceiptProblem> problems{};    // one for each product whose records are left out
};

// Gives each record to its product, in the order in which they come. Of two products with one identifier the
// first gets them.
[[nodiscard]] CORVANTILE_API CategorizedReceipts categorize(const std::vector<ReceiptInfo>& records,
                                                            const std::vector<ReceiptProduct>& catalogue);

} // namespace corvantile
