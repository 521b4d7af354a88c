#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"

namespace corvantile {

namespace {

std::string_view sentence(KeychainStatus status) {
    switch (status) {
    case KeychainStatus::diskFull: return "The disk is full.";
    case KeychainStatus::io: return "I/O error.";
    case KeychainStatus::notAvailable: return "No keychain is available.";
    case KeychainStatus::duplicateItem: return "The specified item already exists in the keychain.";
    case KeychainStatus::interactionNotAllowed: return "User interaction is not allowed.";
    }
    return "The keychain refused.";
}

} // namespace

NSError keychainError(KeychainStatus status, std::string_view detail) {
    std::string text(sentence(status));
    if (!detail.empty()) text.append(" ").append(detail);
    return {keychainErrorDomain, static_cast<int>(status), {{NSError::localizedDescriptionKey, text}}};
}

bool isKeychainError(const NSError& error, KeychainStatus status) {
    return error.domain() == keychainErrorDomain && error.code() == static_cast<int>(status);
}

std::string unreadableEntryLine(std::string_view account, std::string_view service, std::string_view reason) {
    return std::string("Keychain: the entry ")
        .append(debugText(account) + " of " + debugText(service))
        .append(" cannot be read and counts as absent: ")
        .append(reason);
}

} // namespace corvantile
