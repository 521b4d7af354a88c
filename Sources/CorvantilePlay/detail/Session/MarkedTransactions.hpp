#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace corvantile {
class Locksmith;
} // namespace corvantile

namespace corvantile::tool {

class Reporter;

// Follows each transaction from the save of its once-only marker through its events, and reports the one that
// is marked although no sink got any of them: no later pass reports it.
// A pass saves a marker and sends the events of its transaction on one thread, before it saves the next. What
// is still open at the end is concluded by the destructor. Threads: any.
class MarkedTransactions {
public:
    explicit MarkedTransactions(Reporter& reporter);
    MarkedTransactions(const MarkedTransactions&) = delete;
    MarkedTransactions& operator=(const MarkedTransactions&) = delete;
    ~MarkedTransactions();

    // This thread has saved the marker with this account, and has no more events for the one before.
    void begin(const std::string& account);
    // This thread has sent an event; of its open transaction, if it has one.
    void addEvent(bool hasReachedSink);
    // No thread has more events: nothing happens any more.
    void concludeAll();

private:
    struct Transaction {
        std::string account;
        bool hasEvents = false;
        bool hasReachedSink = false; // with one of them
    };

    void conclude(); // this thread's
    void report(const Transaction& transaction) const;

    Reporter& reporter_;
    std::mutex mutex_;
    std::map<std::thread::id, Transaction> open_;
};

// The same keychain; `transactions` follows the purchase markers that are saved in it.
[[nodiscard]] std::shared_ptr<Locksmith> observed(std::shared_ptr<Locksmith> keychain,
                                                  std::shared_ptr<MarkedTransactions> transactions);

} // namespace corvantile::tool
