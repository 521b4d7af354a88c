#include "DesktopPlatform/Queues/Executors.hpp"

#include <csignal>
#include <string>

#include <pthread.h>

namespace corvantile {

namespace {

// Signals that a host handles arrive on its own threads. Those that a fault raises stay: blocked, they would
// end the process without the report of a debugger or sanitizer.
class HostSignalsBlocked {
public:
    HostSignalsBlocked() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGCHLD, SIGALRM,
                                 SIGWINCH, SIGTSTP, SIGCONT, SIGPIPE})
            sigaddset(&signals, signal);
        pthread_sigmask(SIG_BLOCK, &signals, &before_);
    }
    HostSignalsBlocked(const HostSignalsBlocked&) = delete;
    HostSignalsBlocked& operator=(const HostSignalsBlocked&) = delete;
    ~HostSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

} // namespace

Executors::Executors(unsigned workerCount) : mainThread_(std::this_thread::get_id()) {
    const HostSignalsBlocked blocked;
    for (unsigned number = 1; number <= workerCount; ++number) {
        auto& thread = threads_.emplace_back([this] { workers_.run(); });
        pthread_setname_np(thread.native_handle(), ("corvantile-" + std::to_string(number)).c_str());
    }
}

Executors::~Executors() { close(); }

void Executors::close() {
    if (closed_.exchange(true)) return;
    workers_.stop();
    for (auto& thread : threads_) thread.join();
}

void Executors::discard() {
    timers_.close();
    for (asio::io_context* const context : {&main_, &workers_}) {
        // A queue that takes its turn now finds itself closed and lets its items go. Their ends may stop the
        // loop.
        do {
            context->restart();
        } while (context->poll() > 0);
    }
}

} // namespace corvantile
