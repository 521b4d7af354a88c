#include "CorvantileDesktop/Adjust/detail/DelegateReporter.hpp"

#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxMemory.hpp"
#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <string>
#include <utility>

namespace corvantile {

namespace {

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

} // namespace

DelegateReporter::DelegateReporter(std::shared_ptr<Outbox> outbox, std::shared_ptr<DispatchQueue> main)
    : outbox_(std::move(outbox)), main_(std::move(main)) {}

void DelegateReporter::setDelegate(std::weak_ptr<AdjustDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

void DelegateReporter::report(const OutboxPackage& package, const ServerAnswer& answer) {
    const std::lock_guard lock(mutex_);
    main_->async([weak = delegate_, package, answer, hasNews = isNews(answer)] {
        const auto delegate = weak.lock();
        if (!delegate) return;
        reportAttempt(*delegate, package, answer);
        if (hasNews) delegate->adjustAttributionChanged(answer.attribution);
    });
}

bool DelegateReporter::isNews(const ServerAnswer& answer) {
    if (!answer.attribution || outbox_->remembered(outboxmemory::attribution) == answer.attributionText)
        return false;
    outbox_->remember(outboxmemory::attribution, answer.attributionText);
    return true;
}

} // namespace corvantile
