#pragma once

#include <string>

namespace corvantile {

// The app that every harness launches, and what its store sells.
inline const std::string contractBundle = "com.example.contract";
inline const std::string contractCatalogue = R"({"version": {"major": 1}, "products": [
    {"productID": "gold", "type": "Consumable", "displayPrice": "1"},
    {"productID": "silver", "type": "NonConsumable", "displayPrice": "2"}]})";

} // namespace corvantile
