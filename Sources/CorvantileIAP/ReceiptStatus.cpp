#include "CorvantileIAP/ReceiptStatus.hpp"

namespace corvantile {

namespace {

constexpr int subscriptionExpired = 21006;

constexpr struct {
    int status;
    const char* text;
} knownStatuses[] = {
    {0, "The receipt is valid."},
    {21000, "The store could not read the request."},
    {21001, "The store answers no such request any more."},
    {21002, "The receipt's data is malformed, or the store could not read it for now."},
    {21003, "The receipt is not authentic."},
    {21004, "The shared secret is not the one of the account."},
    {21005, "The store's server could not be reached."},
    {subscriptionExpired, "The receipt is valid, but the subscription has expired."},
    {21007, "The receipt is from the test environment, and was sent to the production one."},
    {21008, "The receipt is from the production environment, and was sent to the test one."},
    {21009, "The store could not reach its data for now."},
    {21010, "The account was not found or is deleted: nothing was ever bought."},
};

} // namespace

std::string receiptStatusText(int status) {
    for (const auto& known : knownStatuses)
        if (known.status == status) return known.text;
    if (status >= 21100 && status <= 21199) return "The store failed internally while it read the receipt.";
    return "The store refused the receipt for a reason of its own.";
}

bool hasPurchases(int status) { return status == 0 || status == subscriptionExpired; }

} // namespace corvantile
