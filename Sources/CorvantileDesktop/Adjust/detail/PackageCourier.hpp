#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace corvantile {

class AdjustLog;
class DispatchQueue;
class HTTPClient;
class Outbox;
class PlatformRequest;
class SecureRandom;
struct HTTPRequest;
struct ServerAnswer;

struct CourierOptions {
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

// Takes packages to the server, in order, one at a time; one that got no answer is tried again after a while,
// and the others wait behind it. Threads: any; it works on its queue.
class PackageCourier : public std::enable_shared_from_this<PackageCourier> {
public:
    // How long an attempt may take.
    static constexpr std::chrono::seconds timeout{60};
    // After how long it asks again whether another process still delivers.
    static constexpr std::chrono::seconds claimWait{1};

    explicit PackageCourier(CourierOptions options);
    PackageCourier(const PackageCourier&) = delete;
    PackageCourier& operator=(const PackageCourier&) = delete;
    ~PackageCourier();

    // At first it may not. Being allowed anew, it tries at once; an attempt under way is brought to its end.
    void allow(bool mayDeliver);
    // There may be something to deliver.
    void wake();

private:
    void post();
    void step();
    void send(OutboxPackage package);
    [[nodiscard]] HTTPRequest requestFor(const OutboxPackage& package) const;
    void finish(const OutboxPackage& package, const ServerAnswer& answer);
    void waitFor(std::chrono::milliseconds duration);
    [[nodiscard]] std::chrono::milliseconds retryWait(const OutboxPackage& package) const;
    void tell(const OutboxPackage& package, const ServerAnswer& answer) const;

    const CourierOptions options_;
    std::atomic<bool> mayDeliver_{false};
    std::atomic<bool> isPosted_{false};
    // Touched on the queue alone:
    std::shared_ptr<PlatformRequest> request_;
    int failures_ = 0; // in a row
    bool isWaiting_ = false;
    std::uint64_t wait_ = 0; // counts waits, so that one that was cut short does not end the next
};

} // namespace corvantile
