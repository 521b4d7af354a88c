#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantilePlatform/Adjust/ADJConfig.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace corvantile {

class DispatchQueue;
class HTTPClient;
class Outbox;
class PlatformRequest;
class SecureRandom;
struct HTTPRequest;
struct ServerAnswer;

// The SDK's lines on the console. Threads: any.
class AdjustLog {
public:
    explicit AdjustLog(std::shared_ptr<Console> console) : console_(std::move(console)) {}

    void setLevel(ADJLogLevel level) { level_.store(level, std::memory_order_relaxed); }
    [[nodiscard]] bool isVerbose() const {
        return level_.load(std::memory_order_relaxed) == ADJLogLevel::verbose;
    }

    // An error of the host, the server or the network: printed at every level but `suppress`. `text` goes on
    // from "Adjust".
    void error(const std::string& text) const {
        if (level_.load(std::memory_order_relaxed) != ADJLogLevel::suppress) print(text);
    }
    // Progress, printed at level `verbose`. Check `isVerbose` before making an expensive text.
    void detail(const std::string& text) const {
        if (isVerbose()) print(text);
    }

private:
    void print(const std::string& text) const { printAfterLocks(console_, "Corvantile: Adjust " + text); }

    const std::shared_ptr<Console> console_;
    std::atomic<ADJLogLevel> level_{ADJLogLevel::info};
};

struct DeliveryOptions {
    std::string endpoint;    // without the slash at its end
    std::string bearerToken; // empty: none is sent
    std::shared_ptr<Outbox> outbox;
    std::shared_ptr<HTTPClient> http;
    std::shared_ptr<SecureRandom> random;
    std::shared_ptr<AdjustLog> log;
    std::shared_ptr<DispatchQueue> queue; // where it works
    // Called on the queue after each attempt.
    std::function<void(const OutboxPackage& package, const ServerAnswer& answer)> report;
};

// Sends packages to the server, in order, one at a time; one without an answer is sent again later, and the
// others wait behind it. Threads: any; it works on its queue.
class OutboxDelivery : NonCopyable, public std::enable_shared_from_this<OutboxDelivery> {
public:
    // How long an attempt may take.
    static constexpr std::chrono::seconds timeout{60};
    // How soon it tries again to get the claim from another process.
    static constexpr std::chrono::seconds claimInterval{1};

    explicit OutboxDelivery(DeliveryOptions options);
    ~OutboxDelivery();

    // Enables or disables delivery (initially disabled). Enabling retries immediately; disabling does not
    // cancel the request in flight.
    void setEnabled(bool isEnabled);
    // Call after adding a package.
    void wake();

private:
    void post();
    void step();
    void send(OutboxPackage package);
    [[nodiscard]] HTTPRequest requestFor(const OutboxPackage& package) const;
    void finish(const OutboxPackage& package, const ServerAnswer& answer);
    void waitFor(std::chrono::milliseconds duration);
    [[nodiscard]] std::chrono::milliseconds retryWait(const OutboxPackage& package) const;
    void logResult(const OutboxPackage& package, const ServerAnswer& answer) const;

    const DeliveryOptions options_;
    std::atomic<bool> isEnabled_{false};
    std::atomic<bool> isPosted_{false};
    // Touched on the queue alone:
    std::shared_ptr<PlatformRequest> request_;
    int failures_ = 0; // in a row
    bool isWaiting_ = false;
    std::uint64_t wait_ = 0; // counts waits, so that a wait that ended early does not end the next one
};

} // namespace corvantile
