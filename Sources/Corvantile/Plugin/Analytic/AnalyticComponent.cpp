#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"

#include <algorithm>

namespace corvantile {

AnalyticComponent::~AnalyticComponent() = default;

bool AnalyticComponent::shouldTrack(const AnalyticEvent& event) const {
    const auto& names = ignoredEventNames();
    return std::find(names.begin(), names.end(), event.name) == names.end();
}

void AnalyticComponent::trackIAPSubs(const NSDecimalNumber&, const std::string&, const std::string&,
                                     const std::vector<std::uint8_t>&, const std::optional<Date>&,
                                     const std::optional<std::string>&) {}

} // namespace corvantile
