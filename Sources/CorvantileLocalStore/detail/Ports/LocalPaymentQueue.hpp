#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/ObservedPaymentQueue.hpp"

#include <cstdint>
#include <memory>
#include <set>
#include <string>

namespace corvantile {

class Console;

// The payment queue over a local store. A payment is purchasing at first; what the store decides comes in a
// later batch. What falls due while the app runs is delivered then; the rest at the next launch.
// Of several processes with observers each transaction is one's, which is asked about promotions alone as
// well; what it leaves unfinished is another's a moment after it has gone.
// A deferred transaction is finished by nobody: the store still has to decide it.
class CORVANTILE_API LocalPaymentQueue final : public ObservedPaymentQueue {
public:
    // The console, which may be null, hears when the store cannot keep what it should.
    [[nodiscard]] static std::shared_ptr<LocalPaymentQueue> make(std::shared_ptr<LocalStore> store,
                                                                 std::shared_ptr<DispatchQueue> mainQueue,
                                                                 std::shared_ptr<Console> console);
    ~LocalPaymentQueue() override;

    void addPayment(std::shared_ptr<const SKPayment> payment) override;
    void restoreCompletedTransactions() override;
    void finishTransaction(const SKPaymentTransaction& transaction) override;
    // This process's, where it has observers; otherwise all that wait in the store.
    [[nodiscard]] Transactions transactions() const override;

    // The identifiers of waiting transactions that the observers have not been given; none without observers.
    // May be called with the store locked.
    [[nodiscard]] std::set<std::string> undelivered() const;

private:
    [[nodiscard]] Transactions takeWaiting() override;
    void willDeliver(const Transactions& batch) override;

    struct Parts;

    LocalPaymentQueue(std::shared_ptr<DispatchQueue> mainQueue, std::unique_ptr<Parts> parts);

    void hear(const LocalStore::News& news);
    void begin() const;
    template <class Concerns>
    std::set<std::int64_t> claimWaiting(Concerns isConcerned);
    void watchOthers();
    void failUnwritten(std::shared_ptr<const SKPayment> payment);
    void settleLater(std::int64_t number);
    void keepTime();
    void askAboutPromotion();
    void answerPromotion(const std::string& productIdentifier, bool isWanted);
    void complain(const std::string& reason) const;
    template <class Act>
    void post(Act act) const;
    template <class Act>
    bool attempt(Act act) const;

    const std::unique_ptr<Parts> parts_;
};

} // namespace corvantile
