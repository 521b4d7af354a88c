#include "CorvantilePlay/detail/Session/ObservedKeychain.hpp"

#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantilePlay/detail/Session/MarkedTransactions.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace corvantile::tool {

namespace {

// Purchase analytics marks under an account that is the transaction's number, and says it again inside.
bool isPurchaseMarker(const KeychainDictionary& dictionary, std::string_view account) {
    constexpr std::string_view validated = "validated_";
    const auto number = account.starts_with(validated) ? account.substr(validated.size()) : account;
    if (number.empty() || number.find_first_not_of("0123456789") != std::string_view::npos) return false;
    return dictionary == KeychainDictionary{{std::string(account), true}};
}

class ObservedKeychain final : public Locksmith {
public:
    ObservedKeychain(std::shared_ptr<Locksmith> keychain, std::shared_ptr<MarkedTransactions> transactions)
        : keychain_(std::move(keychain)), transactions_(std::move(transactions)) {}

    [[nodiscard]] std::optional<KeychainDictionary> load(std::string_view account,
                                                         std::string_view service) const override {
        return keychain_->load(account, service);
    }
    void save(const KeychainDictionary& dictionary, std::string_view account,
              std::string_view service) override {
        keychain_->save(dictionary, account, service);
        if (isPurchaseMarker(dictionary, account)) transactions_->begin(std::string(account));
    }
    void update(const KeychainDictionary& dictionary, std::string_view account,
                std::string_view service) override {
        keychain_->update(dictionary, account, service);
    }
    bool remove(std::string_view account, std::string_view service) override {
        return keychain_->remove(account, service);
    }

private:
    const std::shared_ptr<Locksmith> keychain_;
    const std::shared_ptr<MarkedTransactions> transactions_;
};

} // namespace

std::shared_ptr<Locksmith> observed(std::shared_ptr<Locksmith> keychain,
                                    std::shared_ptr<MarkedTransactions> transactions) {
    return std::make_shared<ObservedKeychain>(std::move(keychain), std::move(transactions));
}

} // namespace corvantile::tool
