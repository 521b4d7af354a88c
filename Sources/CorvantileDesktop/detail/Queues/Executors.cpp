#include "CorvantileDesktop/detail/Queues/Executors.hpp"

#include "CorvantileDesktop/detail/Queues/HostSignals.hpp"

#include <string>

#include <pthread.h>

namespace corvantile {

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
