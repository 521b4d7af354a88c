#include "CorvantileDesktop/Adjust/detail/ServerAnswer.hpp"

#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <nlohmann/json.hpp>

#include <string_view>
#include <utility>

namespace corvantile {

namespace {

using JSON = nlohmann::json;

// Missing also when it is something else than a text.
std::optional<std::string> textIn(const JSON& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::optional<double> numberIn(const JSON& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number()) return std::nullopt;
    return found->get<double>();
}

ADJAttribution attributionIn(const JSON& object, const std::optional<std::string>& adid) {
    return {.trackerToken = textIn(object, "tracker_token"),
            .trackerName = textIn(object, "tracker_name"),
            .network = textIn(object, "network"),
            .campaign = textIn(object, "campaign"),
            .adgroup = textIn(object, "adgroup"),
            .creative = textIn(object, "creative"),
            .clickLabel = textIn(object, "click_label"),
            .adid = adid,
            .costType = textIn(object, "cost_type"),
            .costAmount = numberIn(object, "cost_amount"),
            .costCurrency = textIn(object, "cost_currency")};
}

void read(const JSON& object, ServerAnswer& answer) {
    answer.message = textIn(object, "message");
    if (!answer.message) answer.message = textIn(object, "error");
    answer.timeStamp = textIn(object, "timestamp");
    answer.adid = textIn(object, "adid");
    const auto attribution = object.find("attribution");
    if (attribution == object.end() || !attribution->is_object()) return;
    answer.attribution = attributionIn(*attribution, answer.adid);
    answer.attributionText =
        attribution->dump(-1, ' ', true, JSON::error_handler_t::replace) + " " + answer.adid.value_or("");
}

bool isPlainOk(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos &&
           text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1) == "OK";
}

void reportEvent(AdjustDelegate& delegate, const std::string& eventToken, const ServerAnswer& answer) {
    if (answer.isSuccess)
        delegate.adjustEventTrackingSucceeded(ADJEventSuccess{.message = answer.message,
                                                              .timeStamp = answer.timeStamp,
                                                              .adid = answer.adid,
                                                              .eventToken = eventToken,
                                                              .jsonResponse = answer.json});
    else
        delegate.adjustEventTrackingFailed(ADJEventFailure{.message = answer.message,
                                                           .timeStamp = answer.timeStamp,
                                                           .adid = answer.adid,
                                                           .eventToken = eventToken,
                                                           .willRetry = !answer.isAnswer,
                                                           .jsonResponse = answer.json});
}

void reportSession(AdjustDelegate& delegate, const ServerAnswer& answer) {
    if (answer.isSuccess)
        delegate.adjustSessionTrackingSucceeded(ADJSessionSuccess{.message = answer.message,
                                                                  .timeStamp = answer.timeStamp,
                                                                  .adid = answer.adid,
                                                                  .jsonResponse = answer.json});
    else
        delegate.adjustSessionTrackingFailed(ADJSessionFailure{.message = answer.message,
                                                               .timeStamp = answer.timeStamp,
                                                               .adid = answer.adid,
                                                               .willRetry = !answer.isAnswer,
                                                               .jsonResponse = answer.json});
}

void reportAttempt(AdjustDelegate& delegate, const OutboxPackage& package, const ServerAnswer& answer) {
    switch (package.kind) {
    case PackageKind::session: return reportSession(delegate, answer);
    case PackageKind::event: return reportEvent(delegate, entryOf(package).eventToken, answer);
    case PackageKind::subscription: return;
    }
}

// The services answer with some hundred bytes. What is so large is no answer of theirs, and would take many
// times as much memory to read.
constexpr std::size_t largestServiceAnswer = 256UL * 1024;

// After a redirection the answer is to another request: a POST may have gone on as a GET, without the
// package.
std::string whyNoAnswer(const HTTPResponse& response) {
    const bool leadsElsewhere = response.status >= 300 && response.status < 400;
    if (response.isRedirected || leadsElsewhere) return "The server sent the request elsewhere.";
    if (response.body.size() > largestServiceAnswer)
        return "The server answered with " + std::to_string(response.body.size()) + " bytes.";
    return {};
}

ServerAnswer noAnswer(int status, const std::string& why) {
    ServerAnswer answer;
    answer.status = status;
    answer.text = why;
    answer.message = why;
    return answer;
}

} // namespace

ServerAnswer answerOf(const HTTPResponse& response) {
    if (const auto why = whyNoAnswer(response); !why.empty()) return noAnswer(response.status, why);
    ServerAnswer answer;
    answer.status = response.status;
    answer.text = response.body;
    const bool isWell = response.status >= 200 && response.status < 300;
    const auto body = parseJSON<JSON>(response.body);
    if (body.is_object()) read(body, answer);
    if (body.is_structured()) answer.json = response.body;
    answer.isAnswer = body.is_structured() || (isWell && isPlainOk(response.body));
    answer.isSuccess = answer.isAnswer && isWell;
    if (!answer.isAnswer)
        answer.message = "The server answered " + std::to_string(response.status) + " without JSON.";
    return answer;
}

ServerAnswer noAnswer(const std::exception_ptr& error) {
    ServerAnswer answer;
    answer.text = localizedDescription(error);
    answer.message = answer.text;
    return answer;
}

DelegateReporter::DelegateReporter(std::shared_ptr<Outbox> outbox, std::shared_ptr<DispatchQueue> main)
    : outbox_(std::move(outbox)), main_(std::move(main)) {}

void DelegateReporter::setDelegate(std::weak_ptr<AdjustDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

void DelegateReporter::report(const OutboxPackage& package, const ServerAnswer& answer) {
    const ReportingLock lock(mutex_);
    main_->async([weak = delegate_, package, answer, isAttributionNew = isNewAttribution(answer)] {
        const auto delegate = weak.lock();
        if (!delegate) return;
        reportAttempt(*delegate, package, answer);
        if (isAttributionNew) delegate->adjustAttributionChanged(answer.attribution);
    });
}

bool DelegateReporter::isNewAttribution(const ServerAnswer& answer) {
    if (!answer.attribution || outbox_->remembered(outboxmemory::attribution) == answer.attributionText)
        return false;
    outbox_->remember(outboxmemory::attribution, answer.attributionText);
    return true;
}

} // namespace corvantile
