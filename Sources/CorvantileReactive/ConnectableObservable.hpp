#pragma once

#include "CorvantileReactive/Disposable.hpp"
#include "CorvantileReactive/DisposableSlot.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/Event.hpp"
#include "CorvantileReactive/detail/ReplayBuffer.hpp"
#include "CorvantileReactive/detail/SubjectCore.hpp"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace corvantile::rx {

namespace detail {

template <class T>
class ReplayAllSource final : public Source<T>, public std::enable_shared_from_this<ReplayAllSource<T>> {
    using Core = SubjectCore<T, QueueBuffer<T>>;

public:
    explicit ReplayAllSource(std::shared_ptr<Source<T>> upstream) : upstream_(std::move(upstream)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        std::unique_lock lock(mutex_);
        const auto subject = subjectLocked();
        lock.unlock();
        return subject->subscribe(std::move(observer), chain);
    }

    Disposable connect() {
        std::unique_lock lock(mutex_);
        if (connection_) return Disposable(connection_);
        const auto connection = std::make_shared<Connection>(this->weak_from_this());
        connection_ = connection;
        const auto relay = std::make_shared<Relay>(subjectLocked(), connection);
        lock.unlock();
        connection->begin(attach(*upstream_, relay));
        return Disposable(connection);
    }

private:
    class Connection final : public Cancelable {
    public:
        explicit Connection(std::weak_ptr<ReplayAllSource> owner) : owner_(std::move(owner)) {}

        void begin(Disposable upstream) {
            upstream_.exchange(std::move(upstream));
            if (isDisposed()) upstream_.disposeAndClear();
        }

        void dispose() noexcept override {
            if (disposed_.exchange(true, std::memory_order_acq_rel)) return;
            const auto owner = owner_.lock();
            if (owner) owner->dismantle(this);
            upstream_.disposeAndClear();
        }

        bool isDisposed() const noexcept override { return disposed_.load(std::memory_order_acquire); }

    private:
        const std::weak_ptr<ReplayAllSource> owner_;
        std::atomic<bool> disposed_{false};
        DisposableSlot upstream_;
    };

    // From the source to the subject. At a terminal the connection is dismantled first.
    class Relay final : public FinalObserver<T> {
    public:
        Relay(std::shared_ptr<Core> subject, std::weak_ptr<Connection> connection)
            : subject_(std::move(subject)), connection_(std::move(connection)) {}

        void onNext(const T& value) noexcept override {
            if (this->isLive()) subject_->onNext(value);
        }

    private:
        void terminated(const Terminal& terminal) noexcept override {
            if (const auto connection = connection_.lock()) connection->dispose();
            terminal.deliverTo(*subject_);
        }

        const std::shared_ptr<Core> subject_;
        const std::weak_ptr<Connection> connection_;
    };

    const std::shared_ptr<Core>& subjectLocked() {
        if (!subject_) subject_ = std::make_shared<Core>();
        return subject_;
    }

    void dismantle(const Connection* connection) {
        std::shared_ptr<Core> subject;
        std::shared_ptr<Connection> mine;
        const std::lock_guard lock(mutex_);
        if (connection_.get() != connection) return;
        mine.swap(connection_);
        subject.swap(subject_);
    }

    const std::shared_ptr<Source<T>> upstream_;
    std::mutex mutex_;
    std::shared_ptr<Core> subject_;
    std::shared_ptr<Connection> connection_;
};

} // namespace detail

// A stream whose subscribers share one subscription to its source, made by `connect` and not before: without
// it they receive nothing, not even a terminal. What the source emits is kept, without bound, from the first
// subscription or `connect` on.
template <class T>
class ConnectableObservable : public Observable<T> {
public:
    explicit ConnectableObservable(std::shared_ptr<detail::ReplayAllSource<T>> source)
        : Observable<T>(source), core_(std::move(source)) {}

    // Subscribes to the source; while connected, returns the same connection. Disposing it does not end the
    // source, and its subscribers get no terminal; the next subscription starts from the beginning.
    Disposable connect() const { return core_->connect(); }

private:
    std::shared_ptr<detail::ReplayAllSource<T>> core_;
};

template <class T>
ConnectableObservable<T> Observable<T>::replayAll() const {
    return ConnectableObservable<T>(std::make_shared<detail::ReplayAllSource<T>>(source_));
}

} // namespace corvantile::rx
