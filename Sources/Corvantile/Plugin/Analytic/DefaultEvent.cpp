#include "Corvantile/Plugin/Analytic/DefaultEvent.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

namespace corvantile {

namespace {

AnalyticEvent failureEvent(const char* name, const DefaultEvent::Failure& failure) {
    return {name, {{"error", localizedDescription(failure.err)}}};
}

// The number itself goes along, not its text: a sink may need it exactly.
AnalyticEvent revenueEvent(std::string name, const NSDecimalNumber& value, const std::string& currency) {
    return {std::move(name), {{"value", value}, {"currency", currency}}};
}

AnalyticEvent purchaseEvent(const char* prefix, const DefaultEvent::Purchase& purchase) {
    return revenueEvent(prefix + purchase.productID, purchase.value, purchase.currency);
}

// One overload for each case: a new one does not compile until it has its event.
struct EventOf {
    using Known = DefaultEvent;

    AnalyticEvent operator()(const Known::LocksmithCreateFirstdate& known) const {
        return failureEvent("locksmith_create_firstdate", known);
    }
    AnalyticEvent operator()(const Known::LocksmithUpdateFirstdate& known) const {
        return failureEvent("locksmith_update_firstdate", known);
    }
    AnalyticEvent operator()(const Known::TrialConversion& known) const {
        return purchaseEvent("trial_conversion_", known);
    }
    AnalyticEvent operator()(const Known::TrialSubscribe& known) const {
        return purchaseEvent("trial_subscribe_", known);
    }
    AnalyticEvent operator()(const Known::RenewSubscribe& known) const {
        return purchaseEvent("renew_", known);
    }
    AnalyticEvent operator()(const Known::Subscribe& known) const {
        return purchaseEvent("subscribe_", known);
    }
    AnalyticEvent operator()(const Known::TotalSubscription& known) const {
        return revenueEvent("total_subscription", known.value, known.currency);
    }
    AnalyticEvent operator()(const Known::GracePeriodEnter& known) const {
        return {"enter_grace_period", {{"value", known.productID}}};
    }
    AnalyticEvent operator()(Known::ManageSubscription) const { return AnalyticEvent("manage_subscription"); }
    AnalyticEvent operator()(Known::Store) const { return AnalyticEvent("store"); }
    AnalyticEvent operator()(Known::DirectStore) const { return AnalyticEvent("direct_store"); }
    AnalyticEvent operator()(Known::DirectStoreClick) const { return AnalyticEvent("direct_store_click"); }
    AnalyticEvent operator()(Known::OstrelValidatedInAppPurchase) const {
        return AnalyticEvent("ostrel_in_app_purchase");
    }
};

} // namespace

DefaultEvent DefaultEvent::locksmithCreateFirstdate(std::exception_ptr err) {
    return DefaultEvent(LocksmithCreateFirstdate{{std::move(err)}});
}
DefaultEvent DefaultEvent::locksmithUpdateFirstdate(std::exception_ptr err) {
    return DefaultEvent(LocksmithUpdateFirstdate{{std::move(err)}});
}
DefaultEvent DefaultEvent::trialConversion(std::string productID, NSDecimalNumber value,
                                           std::string currency) {
    return DefaultEvent(TrialConversion{{std::move(productID), value, std::move(currency)}});
}
DefaultEvent DefaultEvent::trialSubscribe(std::string productID, NSDecimalNumber value,
                                          std::string currency) {
    return DefaultEvent(TrialSubscribe{{std::move(productID), value, std::move(currency)}});
}
DefaultEvent DefaultEvent::renewSubscribe(std::string productID, NSDecimalNumber value,
                                          std::string currency) {
    return DefaultEvent(RenewSubscribe{{std::move(productID), value, std::move(currency)}});
}
DefaultEvent DefaultEvent::subscribe(std::string productID, NSDecimalNumber value, std::string currency) {
    return DefaultEvent(Subscribe{{std::move(productID), value, std::move(currency)}});
}
DefaultEvent DefaultEvent::totalSubscription(NSDecimalNumber value, std::string currency) {
    return DefaultEvent(TotalSubscription{value, std::move(currency)});
}
DefaultEvent DefaultEvent::gracePeriodEnter(std::string productID) {
    return DefaultEvent(GracePeriodEnter{std::move(productID)});
}
DefaultEvent DefaultEvent::manageSubscription() { return DefaultEvent(ManageSubscription{}); }
DefaultEvent DefaultEvent::store() { return DefaultEvent(Store{}); }
DefaultEvent DefaultEvent::directStore() { return DefaultEvent(DirectStore{}); }
DefaultEvent DefaultEvent::directStoreClick() { return DefaultEvent(DirectStoreClick{}); }
DefaultEvent DefaultEvent::ostrelValidatedInAppPurchase() {
    return DefaultEvent(OstrelValidatedInAppPurchase{});
}

AnalyticEvent DefaultEvent::event() const { return std::visit(EventOf{}, case_); }

} // namespace corvantile
