#include "CorvantilePlay/detail/Text/PromotionText.hpp"

namespace corvantile::tool {

EventValue::Map fieldsOf(const PromoteInstall& promotion) {
    return {{"isEnabled", promotion.isEnabled()},
            {"threshold", promotion.threshold()},
            {"appID", promotion.appID()},
            {"appName", promotion.appName()},
            {"messageTitle", promotion.messageTitle()},
            {"messageBody", promotion.messageBody()},
            {"noButtonTitle", promotion.noButtonTitle()},
            {"yesButtonTitle", promotion.yesButtonTitle()}};
}

std::string describe(const PromoteInstall& promotion) {
    return std::string(promotion.isEnabled() ? "asks at " : "is switched off; would ask at ") +
           std::to_string(promotion.threshold()) + ": \"" + promotion.messageTitle() + "\" \"" +
           promotion.messageBody() + "\" [" + promotion.noButtonTitle() + "] [" + promotion.yesButtonTitle() +
           "], for " + promotion.appName() + " (" + promotion.appID() + ")";
}

} // namespace corvantile::tool
