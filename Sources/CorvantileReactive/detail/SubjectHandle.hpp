#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/SubjectCore.hpp"

#include <exception>
#include <memory>
#include <utility>

namespace corvantile::rx::detail {

// What every subject offers: a stream that one emits into. Copies are the same subject. Threads: any; events
// of several threads are not put in one order. No lock is held while observers run, so an observer may emit
// (the nested element is delivered first), subscribe (a new observer misses the running element) and dispose
// (who is disposed of gets nothing more, not even the running element).
template <class T>
class SubjectHandle : public Observable<T> {
public:
    void onNext(const T& value) const noexcept { core_->onNext(value); }
    void onError(const std::exception_ptr& error) const noexcept { core_->onError(error); }
    void onCompleted() const noexcept { core_->onCompleted(); }

    // Drops observers and buffer silently; later subscribers get an error.
    void dispose() const noexcept { core_->dispose(); }

    [[nodiscard]] bool hasObservers() const { return core_->hasObservers(); }
    [[nodiscard]] AnyObserver<T> asObserver() const { return AnyObserver<T>(core_); }

protected:
    explicit SubjectHandle(std::shared_ptr<Subject<T>> core) : Observable<T>(core), core_(std::move(core)) {}

private:
    std::shared_ptr<Subject<T>> core_;
};

} // namespace corvantile::rx::detail
