#include "HostCore/ActivityIndicator.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <atomic>

namespace corvantile {

namespace {

// A reason to look at the count again. What is told is the count of the moment of delivery, so that `true`
// never comes before the count is up, nor `false` before it is down, whoever subscribes when.
struct Change {};

using Count = std::atomic<int>;

} // namespace

class ActivityIndicator::Activities : public std::enable_shared_from_this<Activities> {
public:
    // The first change greets every subscriber.
    Activities() { changes_.onNext({}); }

    void begin() {
        if (count_->fetch_add(1) == 0) announceChange();
    }

    void end() {
        if (count_->fetch_sub(1) == 1) announceChange();
    }

    rx::Observable<bool> isRunning() const {
        // The count alone: a subscriber that held all of this would be held by it in turn.
        return changes_.map([count = count_](Change) { return count->load() > 0; }).distinctUntilChanged();
    }

private:
    void announceChange() {
        if (isAnnounced_.exchange(true)) return;
        mainQueue_->async([self = shared_from_this()] {
            self->isAnnounced_ = false;
            self->changes_.onNext({});
        });
    }

    const std::shared_ptr<Count> count_ = std::make_shared<Count>(0);
    const std::shared_ptr<DispatchQueue> mainQueue_ = DispatchQueue::main();
    rx::ReplaySubject<Change> changes_ = rx::ReplaySubject<Change>::create(1);
    std::atomic<bool> isAnnounced_{false};
};

ActivityIndicator::ActivityIndicator() : activities_(std::make_shared<Activities>()) {}
ActivityIndicator::~ActivityIndicator() = default;

rx::Observable<bool> ActivityIndicator::asObservable() const { return activities_->isRunning(); }

void ActivityIndicator::begin(Activities& activities) { activities.begin(); }
void ActivityIndicator::end(Activities& activities) { activities.end(); }

} // namespace corvantile
