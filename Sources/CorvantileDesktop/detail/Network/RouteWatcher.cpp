#include "CorvantileDesktop/detail/Network/RouteWatcher.hpp"

#include <cerrno>
#include <chrono>
#include <fstream>
#include <string>
#include <utility>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

namespace corvantile {

namespace {

// Where messages come faster than they are read, asking again at once would only make it worse.
constexpr std::chrono::milliseconds pauseBeforeBeginningAgain{200};
constexpr std::size_t usualDatagram = 32 * 1024;

int openRoutingSocket() {
    const int descriptor = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    if (descriptor < 0) return -1;
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups =
        RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    ::close(descriptor);
    return -1;
}

std::uint32_t portOf(int descriptor) {
    sockaddr_nl address{};
    socklen_t length = sizeof address;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0) return 0;
    return address.nl_pid;
}

// The real length, also of a datagram that the buffer cut; -1 with errno on failure. What is not from the
// kernel has length 0.
ssize_t receive(int descriptor, std::vector<std::byte>& buffer) {
    sockaddr_nl sender{};
    socklen_t length = sizeof sender;
    const auto count = ::recvfrom(descriptor, buffer.data(), buffer.size(), MSG_TRUNC,
                                  reinterpret_cast<sockaddr*>(&sender), &length);
    return count > 0 && sender.nl_pid != 0 ? 0 : count;
}

std::string deviceTypeOf(const std::string& link) {
    static constexpr std::string_view key = "DEVTYPE=";
    std::ifstream event("/sys/class/net/" + link + "/uevent");
    for (std::string line; std::getline(event, line);)
        if (line.starts_with(key)) return line.substr(key.size());
    return {};
}

} // namespace

RouteWatcher::RouteWatcher(asio::io_context& context, Report report)
    : context_(context), report_(std::move(report)), buffer_(usualDatagram) {}

bool RouteWatcher::start() {
    const std::lock_guard lock(mutex_);
    if (closed_) return false;
    if (!started_) started_ = open();
    return started_;
}

void RouteWatcher::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    socket_.reset();
    pause_.reset();
}

// Handlers that were ready when the threads ended are still called, to let go of what they hold.
bool RouteWatcher::isClosed() {
    const std::lock_guard lock(mutex_);
    return closed_;
}

bool RouteWatcher::open() {
    const int descriptor = openRoutingSocket();
    if (descriptor < 0) return false;
    socket_.emplace(context_, descriptor);
    tracker_.emplace(portOf(descriptor), deviceTypeOf);
    if (!send(tracker_->begin())) {
        socket_.reset();
        return false;
    }
    wait();
    return true;
}

void RouteWatcher::wait() {
    socket_->async_wait(asio::posix::stream_descriptor::wait_read,
                        [self = shared_from_this()](const asio::error_code& error) {
                            if (!error && !self->isClosed()) self->read();
                        });
}

// Until nothing is left to read.
void RouteWatcher::read() {
    while (true) {
        const auto length = receive(socket_->native_handle(), buffer_);
        if (length < 0 && errno == EINTR) continue;
        if (length < 0 && errno == EAGAIN) return wait();
        if (length < 0) return beginAgain();
        const auto size = static_cast<std::size_t>(length);
        if (size > buffer_.size()) {
            buffer_.resize(size);
            return beginAgain();
        }
        if (!react(tracker_->receive(NetlinkBytes(buffer_).first(size)))) return beginAgain();
    }
}

bool RouteWatcher::react(const RouteTracker::Reaction& reaction) {
    if (reaction.failed) return false;
    if (!reaction.request.empty() && !send(reaction.request)) return false;
    if (reaction.status) report_(*reaction.status);
    return true;
}

bool RouteWatcher::send(const std::vector<std::byte>& request) {
    const auto sent = ::send(socket_->native_handle(), request.data(), request.size(), 0);
    return sent == static_cast<ssize_t>(request.size());
}

void RouteWatcher::beginAgain() {
    socket_.reset();
    pause_.emplace(context_, pauseBeforeBeginningAgain);
    pause_->async_wait([self = shared_from_this()](const asio::error_code& error) {
        if (!error && !self->isClosed() && !self->open()) self->beginAgain();
    });
}

} // namespace corvantile
