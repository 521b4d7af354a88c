#include "Corvantile/Extension/UserDefaultsDatabase.hpp"

#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"

#include <utility>

namespace corvantile {

namespace {

std::string storedKey(std::string_view key) {
    return std::string(DatabaseManipulating::prefix).append("_").append(key);
}

} // namespace

UserDefaultsDatabase::UserDefaultsDatabase() : UserDefaultsDatabase(NSUserDefaults::standardUserDefaults()) {}

UserDefaultsDatabase::UserDefaultsDatabase(std::shared_ptr<NSUserDefaults> defaults)
    : defaults_(std::move(defaults)) {}

UserDefaultsDatabase::~UserDefaultsDatabase() = default;

void UserDefaultsDatabase::setText(const std::optional<std::string>& text, std::string_view key,
                                   DatabaseCryptor* with) {
    if (!text) return;
    // Without a cryptor there is nothing to store, and storing nothing removes what was there.
    std::optional<NSUserDefaults::Value> sealed;
    if (with != nullptr) sealed = with->encrypt(*text);
    defaults_->setValue(std::move(sealed), storedKey(key));
}

std::optional<std::string> UserDefaultsDatabase::getData(std::string_view key, DatabaseCryptor* with) const {
    auto stored = defaults_->stringForKey(storedKey(key));
    if (!stored || with == nullptr) return stored;
    return with->decrypt(*stored);
}

void UserDefaultsDatabase::deleteAll(std::string_view with) {
    const auto beginning = with.empty() ? prefix : with;
    for (const auto& [key, value] : defaults_->dictionaryRepresentation())
        if (key.starts_with(beginning)) defaults_->removeObjectForKey(key);
}

} // namespace corvantile
