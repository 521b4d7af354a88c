#include "CorvantileLocalStore/Engine/detail/StoreSession.hpp"

#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantileLocalStore/Engine/detail/ReceiptText.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include <algorithm>
#include <vector>

namespace corvantile {

void StoreSession::setListener(LocalStore::Listener told) {
    const std::lock_guard lock(mutex_);
    listener_ = std::move(told);
}

Date StoreSession::deviceNow() const { return options.clock->now(); }

Date StoreSession::timeForApp() {
    {
        const std::lock_guard lock(mutex_);
        if (clock) return now();
    }
    try {
        return perform([this] { return now(); });
    } catch (const NSError&) {
        return deviceNow(); // nobody can be told, and every use of the store fails for the same reason
    }
}

Date StoreSession::now() {
    const auto followed = clock->setting().device;
    const auto shown = clock->at(deviceNow());
    // The device's clock was set back, which the next launch has to know.
    if (clock->setting().device != followed) ledger.put(clock->setting());
    return shown;
}

void StoreSession::refresh() {
    if (isLoaded_ && !options.storage->hasChangedElsewhere()) return;
    std::vector<std::string> unreadable;
    ledger = StoreLedger(options.storage->load(), unreadable);
    for (const auto& key : unreadable)
        printAfterLocks(options.console, "The store passes over a record that it cannot read: " + key);
    if (const auto counters = options.storage->counters(ledger.hasCounters()))
        ledger.raiseCounters(*counters);
    if (ledger.hasCounters()) options.storage->keepCounters(ledger.counters());
    setClock();
    isLoaded_ = true;
    writeReceipt();
    LocalStore::News news{.isAll = true};
    news.updated.reserve(ledger.transactions().size());
    for (const auto& [number, transaction] : ledger.transactions()) news.updated.push_back(transaction);
    announce(std::move(news));
}

void StoreSession::setClock() {
    const auto device = deviceNow();
    if (const auto& kept = ledger.clock()) {
        auto setting = *kept;
        if (clock) setting.seen = std::max(setting.seen, clock->setting().seen);
        clock.emplace(setting);
    } else {
        clock.emplace(device, options.start.value_or(device), 1);
        ledger.put(clock->setting());
    }
    if (!options.clockRate || isRateKept_) return;
    clock->setRate(device, *options.clockRate);
    ledger.put(clock->setting());
}

bool StoreSession::commit() {
    if (!ledger.hasChanges()) return true;
    ledger.put(clock->setting());
    auto changes = ledger.takeChanges();
    options.storage->keepCounters(ledger.counters());
    isLoaded_ = false; // until it is written down: what fails is read again
    if (!options.storage->commit(changes.rows, claimed_)) return false;
    isLoaded_ = true;
    isRateKept_ = true;
    if (changes.hasNewPurchases) writeReceipt();
    announce({.updated = std::move(changes.updated),
              .removed = std::move(changes.removed),
              .claimed = std::exchange(claimed_, {})});
    return true;
}

void StoreSession::announce(LocalStore::News news) const {
    news.hasPromotions = !ledger.settings().promotions.empty();
    if (listener_) listener_(news);
}

void StoreSession::writeReceipt() {
    auto bytes = receiptBytes(ledger, options.bundleIdentifier);
    if (bytes.empty() || bytes == writtenReceipt_ || !options.writeReceipt) return;
    options.writeReceipt(bytes);
    writtenReceipt_ = std::move(bytes);
}

} // namespace corvantile
