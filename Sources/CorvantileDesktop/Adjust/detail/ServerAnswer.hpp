#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"

#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace corvantile {

class DispatchQueue;
class Outbox;
struct HTTPResponse;

// The result of one attempt to deliver.
struct ServerAnswer {
    std::optional<int> status; // missing without a response
    std::string text;          // the body, or why it is missing

    // The server has processed the package, whether or not it accepted it: it answered in JSON, or a plain
    // OK.
    bool isAnswer = false;
    bool isSuccess = false; // only of an answer

    std::optional<std::string> message, timeStamp, adid, json; // as the answer gives them
    std::optional<ADJAttribution> attribution;
    std::string attributionText; // the same as one text, for comparing
};

[[nodiscard]] ServerAnswer answerOf(const HTTPResponse& response);
[[nodiscard]] ServerAnswer noAnswer(const std::exception_ptr& error);

// Calls the delegate, on main, after each attempt to deliver; subscriptions have no callbacks. An attribution
// is passed on when it differs from the one that the outbox remembers. Threads: any.
class DelegateReporter {
public:
    DelegateReporter(std::shared_ptr<Outbox> outbox, std::shared_ptr<DispatchQueue> main);

    // Held weakly, as by the configuration.
    void setDelegate(std::weak_ptr<AdjustDelegate> delegate);

    void report(const OutboxPackage& package, const ServerAnswer& answer);

private:
    [[nodiscard]] bool isNewAttribution(const ServerAnswer& answer);

    const std::shared_ptr<Outbox> outbox_;
    const std::shared_ptr<DispatchQueue> main_;
    std::mutex mutex_;
    std::weak_ptr<AdjustDelegate> delegate_;
};

} // namespace corvantile
