#include "CorvantileIAP/ProductCategory.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"

#include <cstddef>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace corvantile {

CategorizedReceipts categorize(const std::vector<ReceiptInfo>& records,
                               const std::vector<ReceiptProduct>& catalogue) {
    std::vector<ProductCategory> all;
    std::unordered_map<std::string_view, std::size_t> places;
    all.reserve(catalogue.size());
    for (const auto& known : catalogue) {
        if (known.product) places.try_emplace(known.identifier, all.size());
        all.push_back({known.category, known.product, {}});
    }

    std::map<std::string_view, int> strangers;
    for (const auto& record : records) {
        const auto place = places.find(record.productID);
        if (place == places.end())
            ++strangers[record.productID];
        else
            all[place->second].receipts.push_back(record);
    }

    CategorizedReceipts result;
    result.categories.reserve(all.size());
    for (auto& category : all)
        if (!category.receipts.empty()) result.categories.push_back(std::move(category));
    result.problems.reserve(strangers.size());
    for (const auto& [product, count] : strangers)
        result.problems.push_back(
            {"product " + debugText(product),
             "unknown, so its transactions (" + std::to_string(count) + ") are left out"});
    return result;
}

std::string describe(const ProductCategory& category) {
    std::string receipts;
    for (const auto& receipt : category.receipts)
        receipts.append(receipts.empty() ? "" : ", ").append(describe(receipt));
    return "ProductCategory(identifier: " + debugText(category.identifier) +
           ", product: " + debugText(category.product ? category.product->productIdentifier() : "") +
           ", receipts: [" + receipts + "])";
}

} // namespace corvantile
