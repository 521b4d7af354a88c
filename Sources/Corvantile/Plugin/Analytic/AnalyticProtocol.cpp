#include "Corvantile/Plugin/Analytic/AnalyticProtocol.hpp"

namespace corvantile {

AnalyticProtocol::~AnalyticProtocol() = default;

} // namespace corvantile
