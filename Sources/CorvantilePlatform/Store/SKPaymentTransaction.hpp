#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Store/SKPayment.hpp"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace corvantile {

// A platform may report a state that has no name here.
enum class SKPaymentTransactionState : int { purchasing, purchased, failed, restored, deferred };

// The domain of the errors of failed transactions and product requests; the code is an SKErrorCode.
inline constexpr const char* storeErrorDomain = "SKErrorDomain";

enum class SKErrorCode : int {
    unknown = 0,
    clientInvalid = 1,
    paymentCancelled = 2,
    paymentInvalid = 3,
    paymentNotAllowed = 4,
    storeProductNotAvailable = 5,
    cloudServiceNetworkConnectionFailed = 7,
};

// What became of a payment, as it stood when the queue reported it: a later state is a new object. Immutable
// and shared.
class SKPaymentTransaction {
public:
    struct Facts {
        std::shared_ptr<const SKPayment> payment; // never null
        SKPaymentTransactionState state = SKPaymentTransactionState::purchasing;
        std::optional<std::string> identifier{}; // once purchased or restored
        std::optional<Date> date{};              // the same
        std::exception_ptr error{};              // once failed
        // Of a restored transaction, the purchase that it stands for.
        std::optional<std::string> originalIdentifier{};
    };

    explicit SKPaymentTransaction(Facts facts) : facts_(std::move(facts)) {}

    [[nodiscard]] const SKPayment& payment() const { return *facts_.payment; }
    [[nodiscard]] SKPaymentTransactionState transactionState() const { return facts_.state; }
    [[nodiscard]] const std::optional<std::string>& transactionIdentifier() const {
        return facts_.identifier;
    }
    [[nodiscard]] const std::optional<Date>& transactionDate() const { return facts_.date; }
    [[nodiscard]] const std::exception_ptr& error() const { return facts_.error; }
    [[nodiscard]] const std::optional<std::string>& originalTransactionIdentifier() const {
        return facts_.originalIdentifier;
    }

private:
    Facts facts_;
};

} // namespace corvantile
