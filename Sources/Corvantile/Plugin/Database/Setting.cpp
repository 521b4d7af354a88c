#include "Corvantile/Plugin/Database/Setting.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"

namespace corvantile {

std::vector<std::string> defaultIapPolicy() {
    return {
        "Payment is charged to your store account when you confirm the purchase.",
        "The subscription renews automatically unless it is cancelled at least 24 hours before "
        "the end of the current period.",
        "Your account is charged for renewal within 24 hours before the end of the current period, "
        "at the price of the plan you chose.",
        "You can manage your subscription and turn off automatic renewal at any time "
        "in the settings of your store account.",
        "Cancelling takes effect at the end of the current period; the subscription stays active until then.",
        "If a free trial is offered, the subscription begins, and the first payment is charged, "
        "when the trial ends.",
        "Any unused part of a free trial is forfeited when you buy a subscription.",
        "Prices may differ by country and are shown in the currency of your store account "
        "before you confirm.",
    };
}

std::string encodeJSON(const Setting& setting) {
    return recordjson::write({{"iapPolicy", setting.iapPolicy},
                              {"manageSubscriptionEnabled", setting.manageSubscriptionEnabled},
                              {"reviewAppEnabled", setting.reviewAppEnabled}});
}

std::optional<Setting> Setting::fromJSON(std::string_view json) {
    return recordjson::read(json, [](const recordjson::Object& object) {
        return Setting{object.at("iapPolicy").get<std::vector<std::string>>(),
                       recordjson::boolean(object.at("manageSubscriptionEnabled")),
                       recordjson::boolean(object.at("reviewAppEnabled"))};
    });
}

std::string describe(const Setting& setting) {
    const auto text = [](bool value) { return value ? std::string("true") : std::string("false"); };
    return "Setting(iapPolicy: " + std::to_string(setting.iapPolicy.size()) +
           " lines, manageSubscriptionEnabled: " + text(setting.manageSubscriptionEnabled) +
           ", reviewAppEnabled: " + text(setting.reviewAppEnabled) + ")";
}

} // namespace corvantile
