#pragma once

#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/Event.hpp"
#include "CorvantileReactive/detail/ObserverList.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace corvantile::rx::detail {

// What the handles of one subject share, whatever it keeps for later subscribers.
template <class T>
class Subject : public Source<T>, public Observer<T> {
public:
    virtual void dispose() noexcept = 0;
    [[nodiscard]] virtual bool hasObservers() const = 0;
};

// The lock guards state only: everything is delivered, and everything dropped is destroyed, without it.
template <class T, class Buffer>
class SubjectCore final : public Subject<T>,
                          public Detachable,
                          public std::enable_shared_from_this<SubjectCore<T, Buffer>> {
public:
    explicit SubjectCore(Buffer buffer = Buffer()) : buffer_(std::move(buffer)) {}

    void onNext(const T& value) noexcept override {
        auto held = Buffer::hold(value);
        std::unique_lock lock(mutex_);
        if (ended_) return;
        buffer_.store(held);
        for (auto* const subscriber : pending_) subscriber->events.emplace_back(value);
        const auto observers = observers_.snapshot();
        lock.unlock();
        for (const auto& node : observers) node.observer->onNext(value);
    }

    void onError(const std::exception_ptr& error) noexcept override { end(Terminal{error}); }
    void onCompleted() noexcept override { end(Terminal{}); }

    // Drops the observers silently, and the buffer; later subscribers get an error.
    void dispose() noexcept override {
        Buffer buffer;
        std::unique_lock lock(mutex_);
        const auto ended = std::exchange(ended_, Terminal{disposedError()});
        buffer_.swap(buffer);
        const auto observers = std::move(observers_);
        lock.unlock();
    }

    bool hasObservers() const override {
        const std::lock_guard lock(mutex_);
        const auto observers = observers_.snapshot();
        return observers.begin() != observers.end();
    }

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain&) override {
        Upstream upstream{.source = this->weak_from_this(), .keep = observer};
        std::unique_lock lock(mutex_);
        upstream.key = ++lastKey_;
        if (!ended_ && buffer_.isEmpty())
            observers_.add(upstream.key, std::move(observer));
        else
            replay(std::move(lock), upstream.key, std::move(observer));
        return upstream;
    }

    void detach(std::uint64_t key) noexcept override {
        std::unique_lock lock(mutex_);
        const auto removed = observers_.remove(key);
        lock.unlock();
    }

private:
    // A subscriber whose replay is still running, and the events emitted since it began.
    struct PendingSubscriber {
        std::vector<Event<T>> events;
    };

    void end(const Terminal& terminal) noexcept {
        std::unique_lock lock(mutex_);
        if (ended_) return;
        ended_ = terminal;
        for (auto* const subscriber : pending_) subscriber->events.emplace_back(terminal);
        const auto observers = std::move(observers_);
        lock.unlock();
        for (const auto& node : observers.snapshot()) terminal.deliverTo(*node.observer);
    }

    // The buffer is copied and the subscriber registered in one critical section, so no element is lost or
    // duplicated; it is added to the observers in the one that finds no event left for it.
    void replay(std::unique_lock<std::mutex> lock, std::uint64_t key, std::shared_ptr<Observer<T>> observer) {
        const auto kept = buffer_.copy();
        const auto ended = ended_;
        PendingSubscriber subscriber;
        if (!ended) pending_.push_back(&subscriber);
        lock.unlock();

        kept.forEach([&](const T& value) { observer->onNext(value); });
        if (ended) return ended->deliverTo(*observer);
        catchUp(subscriber, key, std::move(observer));
    }

    void catchUp(PendingSubscriber& subscriber, std::uint64_t key, std::shared_ptr<Observer<T>> observer) {
        std::vector<Event<T>> batch;
        for (;;) {
            {
                const std::lock_guard lock(mutex_);
                batch.swap(subscriber.events);
                if (batch.empty()) {
                    pending_.erase(std::find(pending_.begin(), pending_.end(), &subscriber));
                    if (!ended_) observers_.add(key, std::move(observer));
                    return;
                }
            }
            for (const auto& event : batch) event.deliverTo(*observer);
            batch.clear();
        }
    }

    mutable std::mutex mutex_;
    ObserverList<T> observers_;
    std::uint64_t lastKey_ = 0;
    std::vector<PendingSubscriber*> pending_;
    std::optional<Terminal> ended_;
    Buffer buffer_;
};

} // namespace corvantile::rx::detail
