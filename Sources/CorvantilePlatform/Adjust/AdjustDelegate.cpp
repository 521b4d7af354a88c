#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"

namespace corvantile {

AdjustDelegate::~AdjustDelegate() = default;

void AdjustDelegate::adjustAttributionChanged(const std::optional<ADJAttribution>&) {}
void AdjustDelegate::adjustEventTrackingSucceeded(const std::optional<ADJEventSuccess>&) {}
void AdjustDelegate::adjustEventTrackingFailed(const std::optional<ADJEventFailure>&) {}
void AdjustDelegate::adjustSessionTrackingSucceeded(const std::optional<ADJSessionSuccess>&) {}
void AdjustDelegate::adjustSessionTrackingFailed(const std::optional<ADJSessionFailure>&) {}
bool AdjustDelegate::adjustDeeplinkResponse(const std::optional<std::string>&) { return false; }
void AdjustDelegate::adjustConversionValueUpdated(const std::optional<int>&) {}

} // namespace corvantile
