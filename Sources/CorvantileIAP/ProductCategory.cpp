#include "CorvantileIAP/ProductCategory.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"

namespace corvantile {

std::string describe(const ProductCategory& category) {
    std::string receipts;
    for (const auto& receipt : category.receipts)
        receipts.append(receipts.empty() ? "" : ", ").append(describe(receipt));
    return "ProductCategory(identifier: " + debugText(category.identifier) +
           ", product: " + debugText(category.product ? category.product->productIdentifier() : "") +
           ", receipts: [" + receipts + "])";
}

} // namespace corvantile
