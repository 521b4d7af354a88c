#include "CorvantileLocalStore/Engine/detail/StoreFailures.hpp"

#include <string>

namespace corvantile {

namespace {

std::string message(SKErrorCode code) {
    switch (code) {
    case SKErrorCode::clientInvalid: return "The app is not allowed to do this.";
    case SKErrorCode::paymentCancelled: return "The customer has cancelled the payment.";
    case SKErrorCode::paymentInvalid: return "The payment is not valid.";
    case SKErrorCode::paymentNotAllowed: return "The customer is not allowed to make payments.";
    case SKErrorCode::storeProductNotAvailable: return "The store does not sell this product.";
    case SKErrorCode::cloudServiceNetworkConnectionFailed: return "The store cannot be reached.";
    case SKErrorCode::unknown: break;
    }
    return "An unknown error has occurred in the store.";
}

} // namespace

StoreFailure storeFailure(SKErrorCode code) { return {code, message(code)}; }

NSError storeError(const StoreFailure& failure) {
    return NSError(storeErrorDomain, static_cast<int>(failure.code),
                   {{NSError::localizedDescriptionKey, failure.message}});
}

} // namespace corvantile
