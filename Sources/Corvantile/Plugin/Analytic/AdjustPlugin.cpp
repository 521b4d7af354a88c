#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"

#include "Corvantile/Plugin/Analytic/detail/PrintItems.hpp"
#include "CorvantilePlatform/Adjust/Adjust.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

#include <utility>

namespace corvantile {

namespace {

// The field of a payload of which either may be missing.
template <class Payload>
std::string text(const std::optional<Payload>& payload, std::optional<std::string> Payload::*field) {
    return payload ? (*payload.*field).value_or("") : "";
}

} // namespace

AdjustPluggable::~AdjustPluggable() = default;

AdjustPlugin::AdjustPlugin(std::string token, bool isDebug, std::optional<AdjustAppSecret> appSecret,
                           const std::shared_ptr<AdjustDelegate>& customDelegate)
    : appToken_(std::move(token)), delegate_(customDelegate), appSecret_(appSecret), isDebug_(isDebug) {}

AdjustPlugin::AdjustPlugin() { unimplementedInitializer("AdjustPlugin"); }

AdjustPlugin::~AdjustPlugin() = default;

void AdjustPlugin::setAppToken(std::string appToken) { appToken_ = std::move(appToken); }

bool AdjustPlugin::didFinishLaunchingWithOptions(UIApplication&, const LaunchOptions&) {
    const std::string environment = isDebug_ ? ADJEnvironmentSandbox : ADJEnvironmentProduction;
    const auto config = ADJConfig::make(appToken_, environment);
    printItems({config ? config->environment().value_or("") : "", environment, "--- Adjust Environment ",
                ADJEnvironmentSandbox, ADJEnvironmentProduction});
    if (config) configure(*config);
    printItems({"Adjust --- " + (config ? "Optional(" + debugText(config->description()) + ")" : "nil")});
    Adjust::appDidLaunch(config);
    return true;
}

void AdjustPlugin::configure(ADJConfig& config) {
    if (appSecret_)
        config.setAppSecret(appSecret_->id, appSecret_->info1, appSecret_->info2, appSecret_->info3,
                            appSecret_->info4);
    if (const auto host = delegate_.lock())
        config.setDelegate(host);
    else
        config.setDelegate(weak_from_this());
    config.setSendInBackground(true);
    config.setLogLevel(ADJLogLevel::verbose);
    config.setAllowAdServicesInfoReading(true);
    config.setAllowIdfaReading(true);
}

void AdjustPlugin::didRegisterForRemoteNotificationsWithDeviceToken(UIApplication&,
                                                                    const std::vector<std::uint8_t>& token) {
    Adjust::setDeviceToken(token);
}

// The blanks at the ends of these texts are meant: whoever searches a console for a line relies on them.

void AdjustPlugin::adjustAttributionChanged(const std::optional<ADJAttribution>& attribution) {
    printItems({text(attribution, &ADJAttribution::network), "-",
                text(attribution, &ADJAttribution::campaign), "-",
                text(attribution, &ADJAttribution::adgroup), "-", text(attribution, &ADJAttribution::adid),
                " attribution -- Adjust"});
}

bool AdjustPlugin::adjustDeeplinkResponse(const std::optional<std::string>&) { return true; }

void AdjustPlugin::adjustEventTrackingFailed(const std::optional<ADJEventFailure>& failure) {
    printItems({text(failure, &ADJEventFailure::eventToken), " was failed to be sent by -- Adjust"});
}

void AdjustPlugin::adjustSessionTrackingFailed(const std::optional<ADJSessionFailure>& failure) {
    printItems({text(failure, &ADJSessionFailure::message), "sessionFailureResponseData -- Adjust"});
}

void AdjustPlugin::adjustEventTrackingSucceeded(const std::optional<ADJEventSuccess>& success) {
    printItems({text(success, &ADJEventSuccess::eventToken), "was sent successfully -- Adjust"});
}

void AdjustPlugin::adjustConversionValueUpdated(const std::optional<int>& conversionValue) {
    printItems(
        {conversionValue ? std::to_string(*conversionValue) : "", "conversion value updated -- Adjust"});
}

void AdjustPlugin::adjustSessionTrackingSucceeded(const std::optional<ADJSessionSuccess>& success) {
    printItems({text(success, &ADJSessionSuccess::message), "sessionSuccessResponseData -- Adjust"});
}

} // namespace corvantile
