#include "Corvantile/Extension/detail/RealText.hpp"

#include <nlohmann/json.hpp>

#include <cmath>

namespace corvantile {

std::string realText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    return nlohmann::json(value).dump();
}

} // namespace corvantile
