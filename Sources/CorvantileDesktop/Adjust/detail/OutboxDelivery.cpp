#include "CorvantileDesktop/Adjust/detail/OutboxDelivery.hpp"

#include "CorvantileDesktop/Adjust/detail/FormText.hpp"
#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"
#include "CorvantileDesktop/Adjust/detail/ServerAnswer.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

namespace corvantile {

namespace {

std::string_view pathOf(PackageKind kind) {
    switch (kind) {
    case PackageKind::session: return "/session";
    case PackageKind::event: return "/event";
    case PackageKind::subscription: break;
    }
    return "/v2/purchase";
}

bool isFirstSession(const OutboxPackage& package) {
    return package.kind == PackageKind::session && formField(package.form, "session_count") == "1";
}

PackageState stateAfter(const ServerAnswer& answer) {
    if (!answer.isAnswer) return PackageState::waiting;
    return answer.isSuccess ? PackageState::sent : PackageState::refused;
}

using std::chrono::milliseconds;

struct Waits {
    milliseconds first;
    milliseconds longest;
};

constexpr Waits ordinary{std::chrono::seconds(120), std::chrono::hours(24)};
constexpr Waits ofFirstSession{milliseconds(200), std::chrono::hours(1)};

// How long a package waits after `failures` failures in a row (from 1): twice as long each time, up to a
// limit, times `fraction`, which spreads the apps that lost the same server. The first session of an
// installation has short waits to begin with, since an install counts from it.
milliseconds waitAfter(int failures, bool isOfFirstSession, double fraction) {
    const auto& waits = isOfFirstSession ? ofFirstSession : ordinary;
    const double doubled = std::ldexp(static_cast<double>(waits.first.count()), failures - 1);
    const double wait = std::min(doubled, static_cast<double>(waits.longest.count()));
    return milliseconds(std::llround(wait * fraction));
}

} // namespace

OutboxDelivery::OutboxDelivery(DeliveryOptions options) : options_(std::move(options)) {}

OutboxDelivery::~OutboxDelivery() = default;

void OutboxDelivery::setEnabled(bool isEnabled) {
    if (isEnabled_.exchange(isEnabled) == isEnabled) return;
    options_.queue->async([weak = weak_from_this(), isEnabled] {
        const auto self = weak.lock();
        if (!self) return;
        if (isEnabled) self->isWaiting_ = false;
        self->step();
    });
}

// Adding a package must not cost a thread's wake-up when nothing can come of it.
void OutboxDelivery::wake() {
    if (isEnabled_ && !isPosted_.exchange(true)) post();
}

void OutboxDelivery::post() {
    options_.queue->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->isPosted_ = false;
        self->step();
    });
}

void OutboxDelivery::step() {
    if (request_ || isWaiting_) return;
    if (!isEnabled_) return options_.outbox->release();
    if (!options_.outbox->claim()) return waitFor(claimInterval);
    auto package = options_.outbox->front();
    if (!package) return options_.outbox->release();
    send(std::move(*package));
}

void OutboxDelivery::send(OutboxPackage package) {
    if (options_.log->isVerbose()) options_.log->detail("is sending " + describe(package) + ".");
    auto request = requestFor(package);
    auto completion = [weak = weak_from_this(), package = std::move(package)](
                          const std::optional<HTTPResponse>& response, const std::exception_ptr& error) {
        const auto self = weak.lock();
        if (!self) return;
        self->request_.reset();
        self->finish(package, response ? answerOf(*response) : noAnswer(error));
    };
    request_ = options_.http->send(std::move(request), options_.queue, std::move(completion));
}

HTTPRequest OutboxDelivery::requestFor(const OutboxPackage& package) const {
    HTTPRequest request;
    request.method = "POST";
    request.url = options_.endpoint;
    request.url += pathOf(package.kind);
    request.headers.emplace_back("Content-Type", "application/x-www-form-urlencoded");
    if (!options_.bearerToken.empty())
        request.headers.emplace_back("Authorization", "Bearer " + options_.bearerToken);
    request.body = package.form;
    request.timeout = timeout;
    return request;
}

void OutboxDelivery::finish(const OutboxPackage& package, const ServerAnswer& answer) {
    options_.outbox->record(package, stateAfter(answer), {.status = answer.status, .text = answer.text});
    logResult(package, answer);
    options_.report(package, answer);
    failures_ = answer.isAnswer ? 0 : failures_ + 1;
    if (answer.isAnswer)
        step();
    else
        waitFor(retryWait(package));
}

// Another process may deliver in the meantime.
void OutboxDelivery::waitFor(milliseconds duration) {
    options_.outbox->release();
    isWaiting_ = true;
    options_.queue->asyncAfter(duration, [weak = weak_from_this(), wait = ++wait_] {
        const auto self = weak.lock();
        if (!self || self->wait_ != wait || !std::exchange(self->isWaiting_, false)) return;
        self->step();
    });
}

milliseconds OutboxDelivery::retryWait(const OutboxPackage& package) const {
    unsigned char byte = 0;
    options_.random->copyBytes(&byte, 1);
    return waitAfter(failures_, isFirstSession(package), 0.5 + byte / 510.0);
}

void OutboxDelivery::logResult(const OutboxPackage& package, const ServerAnswer& answer) const {
    const auto status = answer.status ? " (" + std::to_string(*answer.status) + ")" : "";
    if (!answer.isAnswer)
        options_.log->error("could not deliver " + describe(package) +
                            ", which will be tried again: " + answer.message.value_or(""));
    else if (!answer.isSuccess)
        options_.log->error("had " + describe(package) + " refused by the server" + status + ": " +
                            answer.message.value_or(answer.text));
    else if (options_.log->isVerbose())
        options_.log->detail("has delivered " + describe(package) + status + ".");
}

} // namespace corvantile
