#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <exception>
#include <string>
#include <utility>
#include <variant>

namespace corvantile {

// The framework's own events: `DefaultEvent::trialSubscribe(productID, price, "EUR").event()`.
class CORVANTILE_API DefaultEvent {
public:
    struct Failure {
        std::exception_ptr err;
    };
    struct Purchase {
        std::string productID;
        NSDecimalNumber value;
        std::string currency;
    };

    struct LocksmithCreateFirstdate : Failure {};
    struct LocksmithUpdateFirstdate : Failure {};
    struct TrialConversion : Purchase {};
    struct TrialSubscribe : Purchase {};
    struct RenewSubscribe : Purchase {};
    struct Subscribe : Purchase {};
    struct TotalSubscription {
        NSDecimalNumber value;
        std::string currency;
    };
    struct GracePeriodEnter {
        std::string productID;
    };
    struct ManageSubscription {};
    struct Store {};
    struct DirectStore {};
    struct DirectStoreClick {};
    struct OstrelValidatedInAppPurchase {};

    using Case =
        std::variant<LocksmithCreateFirstdate, LocksmithUpdateFirstdate, TrialConversion, TrialSubscribe,
                     RenewSubscribe, Subscribe, TotalSubscription, GracePeriodEnter, ManageSubscription,
                     Store, DirectStore, DirectStoreClick, OstrelValidatedInAppPurchase>;

    [[nodiscard]] static DefaultEvent locksmithCreateFirstdate(std::exception_ptr err);
    [[nodiscard]] static DefaultEvent locksmithUpdateFirstdate(std::exception_ptr err);
    [[nodiscard]] static DefaultEvent trialConversion(std::string productID, NSDecimalNumber value,
                                                      std::string currency);
    [[nodiscard]] static DefaultEvent trialSubscribe(std::string productID, NSDecimalNumber value,
                                                     std::string currency);
    [[nodiscard]] static DefaultEvent renewSubscribe(std::string productID, NSDecimalNumber value,
                                                     std::string currency);
    [[nodiscard]] static DefaultEvent subscribe(std::string productID, NSDecimalNumber value,
                                                std::string currency);
    [[nodiscard]] static DefaultEvent totalSubscription(NSDecimalNumber value, std::string currency);
    [[nodiscard]] static DefaultEvent gracePeriodEnter(std::string productID);
    [[nodiscard]] static DefaultEvent manageSubscription();
    [[nodiscard]] static DefaultEvent store();
    [[nodiscard]] static DefaultEvent directStore();
    [[nodiscard]] static DefaultEvent directStoreClick();
    [[nodiscard]] static DefaultEvent ostrelValidatedInAppPurchase();

    // A case with parameters tells the connection status of this call's moment.
    [[nodiscard]] AnalyticEvent event() const;

    [[nodiscard]] const Case& known() const { return case_; }

private:
    explicit DefaultEvent(Case known) : case_(std::move(known)) {}

    Case case_;
};

} // namespace corvantile
