#pragma once

#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Disposable.hpp"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace corvantile {

struct RequestWatch;

// Holds the handle of the one request that may be in flight.
//
// A watch begins requests by itself, on a background queue, while main begins watches and ends the latest. A
// request on behalf of an ended watch is not begun. The request begun last wins, even if its handle arrives
// before that of an earlier one. Threads: any. The slot's destructor disposes nothing.
class RequestSlot : NonCopyable {
public:
    using Watch = std::shared_ptr<RequestWatch>;
    using RequestNumber = std::uint64_t;

    ~RequestSlot();

    // Begins a watch. The previous one is not ended.
    [[nodiscard]] Watch beginWatch();
    // Ends the latest watch alone.
    void endWatch();

    // Disposes the previous request. Does nothing and returns nullopt for a watch that was ended; null stands
    // for no watch.
    [[nodiscard]] std::optional<RequestNumber> beginRequest(const Watch& watch = nullptr);
    // Keeps the handle of the request with this number, or disposes it if the request was cancelled
    // meanwhile.
    void keep(RequestNumber number, rx::Disposable request);
    // Cancels the request, whether its handle has arrived or not.
    void cancelRequest();

private:
    // Nothing is disposed under the lock.
    rx::Disposable takeRequest();

    std::mutex mutex_;
    Watch latestWatch_;
    RequestNumber latest_ = 0;
    rx::Disposable request_; // of the latest number
};

} // namespace corvantile
