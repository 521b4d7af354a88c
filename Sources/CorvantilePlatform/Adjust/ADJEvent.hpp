#pragma once

#include <optional>
#include <string>
#include <utility>

namespace corvantile {

struct ADJRevenue {
    double amount = 0;
    std::string currency; // three letters
};

// One event for the SDK, which knows events by token. Whether token and revenue will do is the SDK's to say
// when it gets it.
class ADJEvent {
public:
    explicit ADJEvent(std::string eventToken) : eventToken_(std::move(eventToken)) {}

    [[nodiscard]] const std::string& eventToken() const { return eventToken_; }

    void setRevenue(double amount, std::string currency) {
        revenue_ = ADJRevenue{amount, std::move(currency)};
    }
    [[nodiscard]] const std::optional<ADJRevenue>& revenue() const { return revenue_; }

    // An event whose identifier was among the last ten is skipped.
    void setTransactionId(std::string identifier) { transactionId_ = std::move(identifier); }
    [[nodiscard]] const std::optional<std::string>& transactionId() const { return transactionId_; }

private:
    std::string eventToken_;
    std::optional<ADJRevenue> revenue_;
    std::optional<std::string> transactionId_;
};

} // namespace corvantile
