#pragma once

#include "Corvantile/Config/PromoteInstall.hpp"
#include "Corvantile/Plugin/Analytic/EventValue.hpp"

#include <string>

// The invitation to install another app.
namespace corvantile::tool {

// As a host shows it that finds it enabled, once its count has come that far.
[[nodiscard]] std::string describe(const PromoteInstall& promotion);

// The same for programs.
[[nodiscard]] EventValue::Map fieldsOf(const PromoteInstall& promotion);

} // namespace corvantile::tool
