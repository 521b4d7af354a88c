#pragma once

#include "CorvantileLocalStore/Engine/detail/StoreClock.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreEngine.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreLedger.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace corvantile {

// One process's hold on a store: the engine over what the storage remembers, one act at a time. What an act
// changes is written down before anybody hears of it. Threads: any for the functions up to `setListener`; the
// members below only inside an act.
class StoreSession {
public:
    explicit StoreSession(LocalStoreOptions given) : options(std::move(given)) {}

    // Answers what `act` answers, once its changes would survive. Where another process came first, it runs
    // once more, on what that one left. What time has brought is kept even if `act` throws NSError.
    template <class Act>
    auto perform(Act act);
    // The same for one that answers nothing.
    template <class Act>
    void command(Act act) {
        perform([&] {
            act();
            return true;
        });
    }
    // The same for one that alters the settings it is given.
    template <class Alter>
    void change(Alter alter) {
        command([&] {
            auto settings = ledger.settings();
            alter(settings);
            ledger.put(std::move(settings));
        });
    }

    void setListener(LocalStore::Listener told);

    // What the clock shows, without looking for what others have changed.
    Date timeForApp();

    // The act has made this transaction for this process. Returns the number.
    std::int64_t claimed(std::int64_t number) { return claimed_.emplace_back(number); }

    [[nodiscard]] Date deviceNow() const;
    Date now();

    const LocalStoreOptions options;
    StoreLedger ledger;
    StoreEngine engine{options.catalogue, ledger};
    std::optional<StoreClock> clock; // once loaded

private:
    void refresh();
    void setClock();
    // False: somebody else has committed meanwhile.
    bool commit();
    void announce(LocalStore::News news) const;
    void writeReceipt();

    std::mutex mutex_;
    std::vector<std::int64_t> claimed_; // in the act that runs
    LocalStore::Listener listener_;
    std::string writtenReceipt_;
    bool isLoaded_ = false;
    bool isRateKept_ = false; // the options' rate is written down
};

template <class Act>
auto StoreSession::perform(Act act) {
    const ReportingLock lock(mutex_);
    for (;;) {
        claimed_.clear();
        refresh();
        engine.subscriptions().catchUp(now());
        std::optional<std::invoke_result_t<Act>> result;
        std::exception_ptr refusal;
        try {
            result.emplace(act());
        } catch (const NSError&) {
            refusal = std::current_exception();
        }
        if (!commit()) continue;
        if (refusal) std::rethrow_exception(refusal);
        return *std::move(result);
    }
}

} // namespace corvantile
