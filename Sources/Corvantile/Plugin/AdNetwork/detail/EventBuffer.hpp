#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <mutex>
#include <optional>

namespace corvantile {

// The events that came while the router had no sink: not yet there, there, or gone for good. Threads: any.
class EventBuffer {
public:
    using Subject = rx::ReplaySubject<AnalyticEvent>;

    EventBuffer();
    EventBuffer(const EventBuffer&) = delete;
    EventBuffer& operator=(const EventBuffer&) = delete;
    ~EventBuffer();

    // Made on first use, without bound; nullopt once discarded.
    [[nodiscard]] std::optional<Subject> subject();
    void discard();

private:
    std::mutex mutex_;
    std::optional<Subject> subject_;
    bool isDiscarded_ = false;
};

} // namespace corvantile
