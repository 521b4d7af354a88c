#pragma once

#include "CorvantileReactive/Disposable.hpp"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace corvantile {

struct RequestWatch;

// Holds the handle of the one request that may be under way.
//
// A watch begins requests by itself, on a background queue, while main begins watches and ends the latest.
// Whoever acts for a watch names it and gets nowhere once that has been ended. The request that has begun
// last wins, though its handle may come before that of an earlier one. Threads: any. The slot's own end
// disposes nothing.
class RequestSlot {
public:
    using Watch = std::shared_ptr<RequestWatch>;
    using Turn = std::uint64_t;

    RequestSlot() = default;
    RequestSlot(const RequestSlot&) = delete;
    RequestSlot& operator=(const RequestSlot&) = delete;
    ~RequestSlot();

    // A new watch. The one before goes on.
    [[nodiscard]] Watch beginWatch();
    // Ends the latest watch alone.
    void endWatch();

    // Disposes of the request before; nullopt, and nothing done, for a watch that was ended. Null: for
    // nobody's.
    [[nodiscard]] std::optional<Turn> beginRequest(const Watch& watch = nullptr);
    // Keeps the request that was begun with this turn, or disposes of it if it was cancelled meanwhile.
    void keep(Turn turn, rx::Disposable request);
    // Disposes of the request, whether it is kept by now or not, and keeps nothing.
    void cancelRequest();

private:
    // Nothing is disposed under the lock.
    rx::Disposable takeForNextTurn();

    std::mutex mutex_;
    Watch latestWatch_;
    Turn turn_ = 0;
    rx::Disposable request_; // of this turn
};

} // namespace corvantile
