#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"

namespace corvantile {

AnalyticPluggable::~AnalyticPluggable() = default;

} // namespace corvantile
