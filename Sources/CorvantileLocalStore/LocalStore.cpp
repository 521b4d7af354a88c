#include "CorvantileLocalStore/LocalStore.hpp"

#include "CorvantileLocalStore/Engine/detail/ReceiptText.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreFailures.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreSession.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

constexpr std::chrono::hours longestJump{24 * 36525}; // a hundred years

template <class Records>
auto listOf(const Records& records) {
    std::vector<typename Records::mapped_type> list;
    list.reserve(records.size());
    for (const auto& [key, record] : records) list.push_back(record);
    return list;
}

[[noreturn]] void refuse(const char* message) {
    throw localStoreError(LocalStoreErrorCode::impossible, message);
}

void requireRate(double rate) {
    if (!(rate >= 0 && rate <= 1e9)) // nor is it no number
        refuse("The store's clock runs forwards, a thousand million times as fast at most.");
}

LocalStoreOptions usable(LocalStoreOptions options) {
    if (options.clockRate) requireRate(*options.clockRate);
    return options;
}

} // namespace

LocalStore::LocalStore(LocalStoreOptions options)
    : session_(std::make_unique<StoreSession>(usable(std::move(options)))) {}
LocalStore::~LocalStore() = default;

void LocalStore::failNextPayment(const std::string& productIdentifier, SKErrorCode reason) {
    session_->command([&] {
        session_->engine.payments().decideNext(productIdentifier,
                                               {PaymentDecision::fails, storeFailure(reason)});
    });
}

void LocalStore::deferNextPayment(const std::string& productIdentifier) {
    session_->command(
        [&] { session_->engine.payments().decideNext(productIdentifier, {PaymentDecision::isDeferred}); });
}

void LocalStore::holdNextPayment(const std::string& productIdentifier) {
    session_->command(
        [&] { session_->engine.payments().decideNext(productIdentifier, {PaymentDecision::isHeld}); });
}

void LocalStore::approve(const std::string& productIdentifier) {
    session_->command([&] { session_->engine.payments().approve(productIdentifier, session_->now()); });
}

void LocalStore::decline(const std::string& productIdentifier) {
    session_->command([&] { session_->engine.payments().decline(productIdentifier); });
}

void LocalStore::refund(const std::string& identifier, bool isForIssueWithApp) {
    session_->command([&] { session_->engine.refund(identifier, isForIssueWithApp, session_->now()); });
}

void LocalStore::buyElsewhere(const std::string& productIdentifier, int quantity) {
    session_->command([&] { session_->engine.payments().buy(productIdentifier, quantity, session_->now()); });
}

void LocalStore::promote(const std::string& productIdentifier) {
    session_->command([&] { session_->engine.promote(productIdentifier); });
}

void LocalStore::setRenews(const std::string& productIdentifier, bool renews) {
    session_->command([&] { session_->engine.setRenews(productIdentifier, renews); });
}

void LocalStore::setBillingFails(const std::string& productIdentifier, bool fails) {
    session_->command([&] { session_->engine.setBilling(productIdentifier, fails, session_->now()); });
}

void LocalStore::failRequests(int count, SKErrorCode reason) {
    session_->change([&](StoreSettings& settings) {
        settings.failingRequests = std::max(count, 0);
        settings.requestFailure = storeFailure(reason);
    });
}

void LocalStore::setOffline(bool isOffline) {
    session_->change([&](StoreSettings& settings) { settings.isOffline = isOffline; });
}

void LocalStore::advance(std::chrono::duration<double> duration) {
    if (!(duration.count() >= 0)) refuse("The store's time does not go back.");
    if (duration > longestJump) refuse("The store's time jumps a hundred years ahead at most.");
    session_->command([&] {
        session_->clock->advance(session_->deviceNow(), duration);
        session_->ledger.put(session_->clock->setting());
        session_->engine.subscriptions().catchUp(session_->now());
    });
}

void LocalStore::setClockRate(double rate) {
    requireRate(rate);
    session_->command([&] {
        session_->clock->setRate(session_->deviceNow(), rate);
        session_->ledger.put(session_->clock->setting());
    });
}

const Catalogue& LocalStore::catalogue() const { return session_->options.catalogue; }

Date LocalStore::now() {
    return session_->perform([&] { return session_->now(); });
}

std::vector<StoreTransaction> LocalStore::transactions() {
    return session_->perform([&] { return listOf(session_->ledger.transactions()); });
}

std::vector<StorePurchase> LocalStore::purchases() {
    return session_->perform([&] { return listOf(session_->ledger.purchases()); });
}

std::vector<StoreSubscription> LocalStore::subscriptions() {
    return session_->perform([&] { return listOf(session_->ledger.subscriptions()); });
}

StoreSettings LocalStore::settings() {
    return session_->perform([&] { return session_->ledger.settings(); });
}

std::optional<std::string> LocalStore::receipt() {
    return session_->perform(
        [&] { return receiptJSON(session_->ledger, session_->options.bundleIdentifier, session_->now()); });
}

Date LocalStore::timeForApp() { return session_->timeForApp(); }

void LocalStore::setListener(Listener listener) { session_->setListener(std::move(listener)); }

std::int64_t LocalStore::addPayment(const std::string& productIdentifier, int quantity) {
    return session_->perform(
        [&] { return session_->claimed(session_->engine.payments().add(productIdentifier, quantity)); });
}

bool LocalStore::claim(std::int64_t number) { return session_->options.storage->claim(number); }
void LocalStore::release(std::int64_t number) { session_->options.storage->release(number); }

void LocalStore::settle(std::int64_t number) {
    session_->command([&] { session_->engine.payments().settle(number, session_->now()); });
}

void LocalStore::finish(std::int64_t number) {
    session_->command([&] { session_->engine.payments().finish(number); });
}

void LocalStore::restore() {
    session_->command([&] {
        session_->engine.countRequest();
        for (const auto number : session_->engine.payments().restore(session_->now()))
            session_->claimed(number);
    });
}

StoreRequests::Products LocalStore::products(const ProductIdentifiers& identifiers) {
    session_->command([&] { session_->engine.countRequest(); });
    if (session_->options.catalogueError) std::rethrow_exception(session_->options.catalogueError);
    StoreRequests::Products found;
    for (const auto& identifier : identifiers)
        if (const auto* const product = catalogue().product(identifier))
            found.push_back(makeProduct(catalogue(), *product));
    return found;
}

std::optional<std::string> LocalStore::receiptForApp(const std::function<std::set<std::string>()>& hidden) {
    return session_->perform([&] {
        if (session_->ledger.settings().isOffline)
            throw storeError(storeFailure(SKErrorCode::cloudServiceNetworkConnectionFailed));
        return receiptJSON(session_->ledger, session_->options.bundleIdentifier, session_->now(),
                           hidden ? hidden() : std::set<std::string>());
    });
}

std::optional<std::string> LocalStore::promotion() {
    return session_->perform([&]() -> std::optional<std::string> {
        const auto& waiting = session_->ledger.settings().promotions;
        if (waiting.empty()) return std::nullopt;
        return waiting.front();
    });
}

std::optional<std::int64_t> LocalStore::answerPromotion(const std::string& productIdentifier, bool goesOn) {
    return session_->perform([&]() -> std::optional<std::int64_t> {
        if (!session_->engine.answerPromotion(productIdentifier) || !goesOn) return std::nullopt;
        return session_->claimed(session_->engine.payments().add(productIdentifier, 1));
    });
}

std::optional<LocalStore::Due> LocalStore::catchUp() {
    return session_->perform([&]() -> std::optional<Due> {
        const auto due = session_->engine.subscriptions().nextDue();
        if (!due || session_->clock->setting().rate == 0) return std::nullopt;
        const auto device = session_->deviceNow();
        const auto delay = session_->clock->until(*due, device);
        return Due{.deviceDate = device + delay, .delay = delay};
    });
}

} // namespace corvantile
