#include "CorvantileDesktop/detail/Network/RouteWatcher.hpp"

#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantileDesktop/detail/Network/NetlinkMessages.hpp"

#include <asio/post.hpp>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace corvantile {

namespace {

// Where changes come faster than they are read, reading again at once would only make it worse.
constexpr std::chrono::milliseconds pauseBeforeOpeningAgain{200};
constexpr std::size_t usualDatagram = 32 * 1024;
constexpr unsigned changeGroups =
    RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;

// Never blocks: the kernel has the answer to a request in the socket before the request's call returns.
Descriptor openRoutingSocket(unsigned groups) {
    Descriptor opened(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = groups;
    if (!opened || ::bind(opened.value(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return Descriptor();
    return opened;
}

// The real length, also of a datagram that the buffer cut; -1 with errno on failure. What is not from the
// kernel has length 0.
ssize_t receive(int descriptor, std::vector<std::byte>& buffer) {
    sockaddr_nl sender{};
    socklen_t length = sizeof sender;
    ssize_t count = 0;
    do {
        count = ::recvfrom(descriptor, buffer.data(), buffer.size(), MSG_TRUNC,
                           reinterpret_cast<sockaddr*>(&sender), &length);
    } while (count < 0 && errno == EINTR);
    return count > 0 && sender.nl_pid != 0 ? 0 : count;
}

bool addEverything(RoutingTable& table, std::uint16_t type, std::vector<std::byte>& buffer) {
    const auto socket = openRoutingSocket(0);
    const auto request = makeDumpRequest(type);
    if (!socket || ::send(socket.value(), request.data(), request.size(), 0) < 0) return false;
    auto progress = DumpProgress::more;
    while (progress == DumpProgress::more) {
        const auto length = receive(socket.value(), buffer);
        if (length < 0) return false;
        const auto size = static_cast<std::size_t>(length);
        if (size > buffer.size()) {
            buffer.resize(size); // for the next attempt
            return false;
        }
        progress = addAnswer(table, NetlinkBytes(buffer).first(size));
    }
    return progress == DumpProgress::done;
}

std::string deviceTypeOf(const std::string& link) {
    static constexpr std::string_view key = "DEVTYPE=";
    std::ifstream event("/sys/class/net/" + link + "/uevent");
    for (std::string line; std::getline(event, line);)
        if (line.starts_with(key)) return line.substr(key.size());
    return {};
}

std::optional<RoutingTable> readRoutingTable(std::vector<std::byte>& buffer) {
    RoutingTable table;
    if (!addEverything(table, RTM_GETLINK, buffer) || !addEverything(table, RTM_GETROUTE, buffer))
        return std::nullopt;
    for (auto& link : table.links) link.deviceType = deviceTypeOf(link.name);
    return table;
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

// Handlers that were ready when the threads ended are still called, to release what they hold.
bool RouteWatcher::isClosed() {
    const std::lock_guard lock(mutex_);
    return closed_;
}

bool RouteWatcher::open() {
    auto opened = openRoutingSocket(changeGroups);
    if (!opened) return false;
    socket_.emplace(context_, opened.release());
    asio::post(context_, [self = shared_from_this()] {
        if (!self->isClosed()) self->refresh();
    });
    return true;
}

void RouteWatcher::wait() {
    socket_->async_wait(asio::posix::stream_descriptor::wait_read,
                        [self = shared_from_this()](const asio::error_code& error) {
                            if (error || self->isClosed()) return;
                            if (self->takeChanges())
                                self->refresh();
                            else
                                self->wait();
                        });
}

// Reads all notifications. True if one of them may matter, or the kernel had to drop some.
bool RouteWatcher::takeChanges() {
    bool hasChanged = false;
    while (true) {
        const auto length = receive(socket_->native_handle(), buffer_);
        if (length < 0) return hasChanged || errno != EAGAIN;
        const auto size = static_cast<std::size_t>(length);
        const bool isCut = size > buffer_.size();
        hasChanged = hasChanged || isCut || reportsChange(NetlinkBytes(buffer_).first(size));
    }
}

// Reports only what did not change while it was read.
void RouteWatcher::refresh() {
    const auto table = readRoutingTable(buffer_);
    if (!table || takeChanges()) return openAgain();
    report_(reachabilityStatus(*table));
    wait();
}

void RouteWatcher::openAgain() {
    socket_.reset();
    pause_.emplace(context_, pauseBeforeOpeningAgain);
    pause_->async_wait([self = shared_from_this()](const asio::error_code& error) {
        if (!error && !self->isClosed() && !self->open()) self->openAgain();
    });
}

} // namespace corvantile
