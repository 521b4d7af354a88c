#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "Corvantile/detail/DebuggedStream.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileReactive/ConnectableObservable.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"
#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace corvantile {

namespace {

using Sinks = std::vector<std::shared_ptr<AnalyticComponent>>;

// The sinks that accept one event. Allocates nothing for as many as a host is likely to have.
class AcceptingSinks {
public:
    AcceptingSinks(const Sinks& sinks, const AnalyticEvent& event) {
        if (sinks.size() > few_.size()) {
            many_ = std::make_unique<AnalyticComponent*[]>(sinks.size());
            chosen_ = many_.get();
        }
        for (const auto& sink : sinks)
            if (sink->shouldTrack(event)) chosen_[count_++] = sink.get();
    }

    [[nodiscard]] AnalyticComponent* const* begin() const { return chosen_; }
    [[nodiscard]] AnalyticComponent* const* end() const { return chosen_ + count_; }

private:
    std::array<AnalyticComponent*, 16> few_;
    std::unique_ptr<AnalyticComponent*[]> many_;
    AnalyticComponent** chosen_ = few_.data();
    std::size_t count_ = 0;
};

// A fixed text that log searches rely on; the number is not a source position.
constexpr std::string_view flushLabel = "AnalyticPlugin:70 (flush())";

AnalyticComponent* firstConsole(const Sinks& sinks) {
    const auto found = std::find_if(sinks.begin(), sinks.end(), [](const auto& sink) {
        const AnalyticComponent& component = *sink;
        return typeid(component) == typeid(ConsoleComponent);
    });
    return found == sinks.end() ? nullptr : found->get();
}

} // namespace

// The events that came while the router had no sink: not created yet, present, or discarded for good.
// Threads: any.
class EventBuffer {
public:
    using Subject = rx::ReplaySubject<AnalyticEvent>;

    // Created on first use, without bound; nullopt once discarded.
    [[nodiscard]] std::optional<Subject> subject() {
        const std::lock_guard lock(mutex_);
        if (!subject_ && !isDiscarded_) subject_ = Subject::createUnbounded();
        return subject_;
    }

    void discard() {
        std::optional<Subject> last; // destroyed after the lock is released
        const std::lock_guard lock(mutex_);
        isDiscarded_ = true;
        last.swap(subject_);
    }

private:
    std::mutex mutex_;
    std::optional<Subject> subject_;
    bool isDiscarded_ = false;
};

AnalyticProtocol::~AnalyticProtocol() = default;
AnalyticPluggable::~AnalyticPluggable() = default;

AnalyticPlugin::AnalyticPlugin() : events_(std::make_unique<EventBuffer>()) {
    lists_.push_back(std::make_unique<const Services>());
    services_ = lists_.back().get();
}

AnalyticPlugin::~AnalyticPlugin() { disposable_.disposeAndClear(); }

void AnalyticPlugin::track(const AnalyticEvent& event) {
    route(event, [&](AnalyticComponent& sink) { sink.track(event); });
}

void AnalyticPlugin::track(const AnalyticEvent& event, const NSDecimalNumber& revenue,
                           const std::string& currency) {
    route(event, [&](AnalyticComponent& sink) { sink.track(event, revenue, currency); });
}

template <class Deliver>
void AnalyticPlugin::route(const AnalyticEvent& event, const Deliver& deliver) {
    const auto self = keptAlive();
    const auto& sinks = services();
    if (sinks.empty()) return buffer(event);
    if (Corvantile::dryRun()) {
        if (auto* const console = firstConsole(sinks)) deliver(*console);
        return;
    }
    for (auto* const sink : AcceptingSinks(sinks, event)) deliver(*sink);
}

void AnalyticPlugin::buffer(const AnalyticEvent& event) {
    if (const auto subject = events_->subject()) subject->onNext(event);
}

void AnalyticPlugin::registerComponents(
    std::initializer_list<std::shared_ptr<AnalyticComponent>> components) {
    if (std::find(components.begin(), components.end(), nullptr) != components.end())
        fatalError("The router was given a null AnalyticComponent.");
    auto next = std::make_unique<Services>(services());
    next->insert(next->end(), components.begin(), components.end());
    lists_.push_back(std::move(next));
    services_.store(lists_.back().get(), std::memory_order_release);
}

void AnalyticPlugin::flush() {
    const auto subject = events_->subject();
    if (!subject) return;
    // Left unconnected on purpose: hosts rely on it that events tracked before the first sink are never sent.
    const auto pipeline = debugged(
        subject->replayAll().observeOn(rx::backgroundScheduler()).subscribeOn(rx::backgroundScheduler()),
        flushLabel);
    const auto weak = weak_from_this();
    // The subscription that this one replaces is not disposed.
    disposable_.exchange(pipeline.subscribe(
        [weak](const AnalyticEvent& event) {
            if (const auto self = weak.lock()) self->track(event);
        },
        {},
        [weak] {
            if (const auto self = weak.lock()) self->events_->discard();
        }));
}

void AnalyticPlugin::trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                                  const std::string& transId, const std::optional<Date>& date,
                                  const std::optional<std::string>& region) {
    const auto self = keptAlive();
    for (const auto& sink : services()) sink->trackIAPSubs(price, currency, transId, date, region);
}

} // namespace corvantile
