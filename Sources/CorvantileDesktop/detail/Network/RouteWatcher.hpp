#pragma once

#include "CorvantileDesktop/detail/Network/RouteTracker.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace corvantile {

// Keeps a routing socket open and reports the status that its tracker finds, first once, then after each
// change that may matter. When the kernel had to drop messages, or refuses, it begins again with a new
// socket.
class RouteWatcher final : public std::enable_shared_from_this<RouteWatcher> {
public:
    using Report =
        std::function<void(NetworkReachabilityStatus)>; // on a thread of the context, one at a time

    RouteWatcher(asio::io_context& context, Report report);

    // Begins, unless it has begun. False when the kernel gives no such socket, or after `close`. Threads:
    // any.
    bool start();

    // No thread runs the context any more.
    void close();

private:
    [[nodiscard]] bool isClosed();
    bool open();
    void wait();
    void read();
    bool react(const RouteTracker::Reaction& reaction);
    bool send(const std::vector<std::byte>& request);
    void beginAgain();

    asio::io_context& context_;
    const Report report_;
    std::mutex mutex_; // of the two flags; the rest belongs to the one handler that is under way
    bool started_ = false;
    bool closed_ = false;
    std::vector<std::byte> buffer_;
    std::optional<RouteTracker> tracker_;
    std::optional<asio::posix::stream_descriptor> socket_;
    std::optional<asio::steady_timer> pause_;
};

} // namespace corvantile
