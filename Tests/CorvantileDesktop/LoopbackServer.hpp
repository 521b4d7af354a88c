#pragma once

#include <httplib.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace corvantile {

// An HTTP server on this machine, on a port of its own. `handle` answers every request on a thread of the
// server's. Handlers end before it does.
class LoopbackServer {
public:
    explicit LoopbackServer(httplib::Server::Handler handle,
                            std::unique_ptr<httplib::Server> server = std::make_unique<httplib::Server>())
        : server_(std::move(server)) {
        const char* const everything = ".*";
        server_->Get(everything, handle).Post(everything, handle).Put(everything, handle);
        server_->Delete(everything, std::move(handle));
        port_ = server_->bind_to_any_port("127.0.0.1");
        if (port_ < 0) throw std::runtime_error("No port for a loopback server.");
        thread_ = std::thread([this] { server_->listen_after_bind(); });
        while (!server_->is_running())
            std::this_thread::yield(); // one that does not run yet cannot be stopped
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() {
        server_->stop();
        thread_.join();
    }

    [[nodiscard]] std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    std::unique_ptr<httplib::Server> server_;
    int port_ = 0;
    std::thread thread_;
};

} // namespace corvantile
