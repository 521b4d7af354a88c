#pragma once

#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantileLocalStore/Engine/detail/PaymentLife.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreLedger.hpp"
#include "CorvantileLocalStore/Engine/detail/SubscriptionLife.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <string>

namespace corvantile {

// The rules of the store, over a catalogue and a ledger that it borrows. It has no clock, no thread and no
// file: every change goes into the ledger. What cannot be done throws NSError (localStoreErrorDomain) and
// changes nothing.
class StoreEngine : NonCopyable {
public:
    StoreEngine(const Catalogue& catalogue, StoreLedger& ledger);

    [[nodiscard]] PaymentLife& payments() { return payments_; }
    [[nodiscard]] SubscriptionLife& subscriptions() { return subscriptions_; }

    // Throws NSError (storeErrorDomain) for a request that is to fail.
    void countRequest();

    void refund(const std::string& identifier, bool isForIssue, Date now);
    void promote(const std::string& productIdentifier);
    // The app has been asked. False: the promotion is not pending any more.
    bool answerPromotion(const std::string& productIdentifier);

    void setRenews(const std::string& productIdentifier, bool renews);
    void setBilling(const std::string& productIdentifier, bool isFailing, Date now);

private:
    const Catalogue& catalogue_;
    StoreLedger& ledger_;
    SubscriptionLife subscriptions_;
    PaymentLife payments_;
};

} // namespace corvantile
