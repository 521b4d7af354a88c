#pragma once

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

// Reports the status of the network, first once, then after each change that may matter. A routing socket
// signals the changes; then all links and default routes are read again. (Following each notification instead
// would miss the routes that vanish silently with their link.)
class RouteWatcher final : public std::enable_shared_from_this<RouteWatcher> {
public:
    // Called on a thread of the context, one call at a time.
    using Report = std::function<void(NetworkReachabilityStatus)>;

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
    [[nodiscard]] bool takeChanges();
    void refresh();
    void openAgain();

    asio::io_context& context_;
    const Report report_;
    std::mutex mutex_; // of the two flags; the rest belongs to the one handler that is pending or runs
    bool started_ = false;
    bool closed_ = false;
    std::vector<std::byte> buffer_;
    std::optional<asio::posix::stream_descriptor> socket_;
    std::optional<asio::steady_timer> pause_;
};

} // namespace corvantile
