#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "Corvantile/Plugin/Database/Setting.hpp"

namespace corvantile::tool {

// The record with the given fields in place of its own. An unknown field, a value of another kind, and no
// field at all are a UsageError.
[[nodiscard]] Setting changedSetting(Setting setting, const EventParameters& fields);

} // namespace corvantile::tool
