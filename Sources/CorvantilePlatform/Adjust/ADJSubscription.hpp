#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace corvantile {

// One subscription purchase for the SDK.
class CORVANTILE_API ADJSubscription {
public:
    // Made by the installed platform; null when it refuses. `receipt` is raw bytes.
    [[nodiscard]] static std::shared_ptr<ADJSubscription> make(const NSDecimalNumber& price,
                                                               const std::string& currency,
                                                               const std::string& transactionId,
                                                               std::string receipt);

    ADJSubscription(NSDecimalNumber price, std::string currency, std::string transactionId,
                    std::string receipt)
        : price_(price),
          currency_(std::move(currency)),
          transactionId_(std::move(transactionId)),
          receipt_(std::move(receipt)) {}

    [[nodiscard]] const NSDecimalNumber& price() const { return price_; }
    [[nodiscard]] const std::string& currency() const { return currency_; }
    [[nodiscard]] const std::string& transactionId() const { return transactionId_; }
    [[nodiscard]] const std::string& receipt() const { return receipt_; }

    void setTransactionDate(Date date) { transactionDate_ = date; }
    [[nodiscard]] const std::optional<Date>& transactionDate() const { return transactionDate_; }

    void setSalesRegion(std::string region) { salesRegion_ = std::move(region); }
    [[nodiscard]] const std::optional<std::string>& salesRegion() const { return salesRegion_; }

private:
    NSDecimalNumber price_;
    std::string currency_;
    std::string transactionId_;
    std::string receipt_;
    std::optional<Date> transactionDate_;
    std::optional<std::string> salesRegion_;
};

} // namespace corvantile
