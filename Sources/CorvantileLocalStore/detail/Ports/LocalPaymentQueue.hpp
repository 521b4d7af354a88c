#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/ObservedPaymentQueue.hpp"

#include <cstdint>
#include <memory>
#include <string>

namespace corvantile {

class Console;

// The payment queue over a local store. A payment is purchasing at first; what the store decides comes in a
// later batch. What falls due while the app runs is delivered then; the rest at the next launch.
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
    [[nodiscard]] Transactions transactions() const override;

private:
    struct Parts;

    LocalPaymentQueue(std::shared_ptr<DispatchQueue> mainQueue, std::unique_ptr<Parts> parts);

    void hear(const LocalStore::News& news);
    void begin() const;
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
