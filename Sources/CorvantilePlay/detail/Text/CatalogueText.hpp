#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <filesystem>
#include <string>

namespace corvantile::tool {

// A UsageError when the file cannot be read, NSError (localStoreErrorDomain) when it is no catalogue.
[[nodiscard]] Catalogue readCatalogueFile(const std::filesystem::path& file);

// A product as a row of a table: identifier, kind, price, period, introductory offer, title.
[[nodiscard]] Cells cellsOf(const Catalogue& catalogue, const CatalogueProduct& product);

// The same for programs.
[[nodiscard]] EventValue::Map fieldsOf(const Catalogue& catalogue, const CatalogueProduct& product);

// `4.99 USD`.
[[nodiscard]] std::string priceText(const NSDecimalNumber& price, const Catalogue& catalogue);

} // namespace corvantile::tool
