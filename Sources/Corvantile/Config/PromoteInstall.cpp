#include "Corvantile/Config/PromoteInstall.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"

#include <utility>

namespace corvantile {

PromoteInstall::PromoteInstall(bool isEnabled, std::int64_t threshold, std::string appID, std::string appName,
                               std::string messageTitle, std::string messageBody, std::string noButtonTitle,
                               std::string yesButtonTitle)
    : isEnabled_(isEnabled),
      threshold_(threshold),
      appID_(std::move(appID)),
      appName_(std::move(appName)),
      messageTitle_(std::move(messageTitle)),
      messageBody_(std::move(messageBody)),
      noButtonTitle_(std::move(noButtonTitle)),
      yesButtonTitle_(std::move(yesButtonTitle)) {}

PromoteInstall PromoteInstall::decode(const KeyedDecodingContainer& container) {
    // Braces: the keys are read in their order, so that the first one at fault is the one named.
    return PromoteInstall{container.decodeBoolean("isEnabled"),    container.decodeInteger("threshold"),
                          container.decodeString("appID"),         container.decodeString("appName"),
                          container.decodeString("messageTitle"),  container.decodeString("messageBody"),
                          container.decodeString("noButtonTitle"), container.decodeString("yesButtonTitle")};
}

std::string encodeJSON(const PromoteInstall& promotion) {
    return recordjson::write({{"isEnabled", promotion.isEnabled()},
                              {"threshold", promotion.threshold()},
                              {"appID", promotion.appID()},
                              {"appName", promotion.appName()},
                              {"messageTitle", promotion.messageTitle()},
                              {"messageBody", promotion.messageBody()},
                              {"noButtonTitle", promotion.noButtonTitle()},
                              {"yesButtonTitle", promotion.yesButtonTitle()}});
}

} // namespace corvantile
