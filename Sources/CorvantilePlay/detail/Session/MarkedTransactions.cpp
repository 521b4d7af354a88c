#include "CorvantilePlay/detail/Session/MarkedTransactions.hpp"

#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"

#include <optional>
#include <string_view>
#include <utility>

namespace corvantile::tool {

namespace {

constexpr std::string_view validated = "validated_";

std::string transactionOf(std::string_view account) {
    return std::string(account.starts_with(validated) ? account.substr(validated.size()) : account);
}

std::string describeMarker(std::string_view account) {
    return (account.starts_with(validated) ? "the validated purchase " : "transaction ") +
           transactionOf(account);
}

EventValue::Map fieldsOfMarker(const std::string& account) {
    return {{"account", account}, {"transaction", transactionOf(account)}};
}

// Purchase analytics marks under an account that is the transaction's number, and repeats it inside; with
// what it is about to send, if nothing may be lost.
bool isPurchaseMarker(const KeychainDictionary& dictionary, std::string_view account) {
    const auto number = transactionOf(account);
    if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return false;
    auto marker = dictionary;
    marker.erase("events");
    return marker == KeychainDictionary{{std::string(account), true}};
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

MarkedTransactions::MarkedTransactions(Reporter& reporter) : reporter_(reporter) {}

MarkedTransactions::~MarkedTransactions() { concludeAll(); }

void MarkedTransactions::begin(const std::string& account) {
    conclude();
    reporter_.report("plugin", "marked",
                     "IAPReceiptTrackingPlugin marks " + describeMarker(account) + " as reported",
                     fieldsOfMarker(account));
    const std::lock_guard lock(mutex_);
    open_[std::this_thread::get_id()] = {.account = account};
}

void MarkedTransactions::addEvent(bool hasReachedSink) {
    const std::lock_guard lock(mutex_);
    const auto found = open_.find(std::this_thread::get_id());
    if (found == open_.end()) return;
    auto& transaction = found->second;
    transaction.hasEvents = true;
    transaction.hasReachedSink = transaction.hasReachedSink || hasReachedSink;
}

void MarkedTransactions::conclude() {
    std::unique_lock lock(mutex_);
    const auto node = open_.extract(std::this_thread::get_id());
    lock.unlock();
    if (!node.empty()) report(node.mapped());
}

void MarkedTransactions::concludeAll() {
    std::unique_lock lock(mutex_);
    const auto ended = std::exchange(open_, {});
    lock.unlock();
    for (const auto& [thread, transaction] : ended) report(transaction);
}

// A marker without an event is ordinary: a later period that is over by then, or a process that ended too
// early. Either way nothing comes after it.
void MarkedTransactions::report(const Transaction& transaction) const {
    if (transaction.hasReachedSink) return;
    const std::string why = transaction.hasEvents ? "no sink got its events" : "no event was sent for it";
    reporter_.report("router", "lost",
                     describeMarker(transaction.account) + " is marked as reported, but " + why +
                         ": nothing reports it later",
                     fieldsOfMarker(transaction.account));
}

std::shared_ptr<Locksmith> observed(std::shared_ptr<Locksmith> keychain,
                                    std::shared_ptr<MarkedTransactions> transactions) {
    return std::make_shared<ObservedKeychain>(std::move(keychain), std::move(transactions));
}

} // namespace corvantile::tool
