#pragma once

#include "CorvantilePlatform/NonCopyable.hpp"

#include <csignal>
#include <initializer_list>

#include <pthread.h>

namespace corvantile {

// Threads that begin while it stands leave the signals that a host handles to the host's own threads. Those
// that a fault raises stay: blocked, they would end the process without the report of a debugger or
// sanitizer.
class HostSignalsBlocked : NonCopyable {
public:
    HostSignalsBlocked() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGCHLD, SIGALRM,
                                 SIGWINCH, SIGTSTP, SIGCONT, SIGPIPE})
            sigaddset(&signals, signal);
        pthread_sigmask(SIG_BLOCK, &signals, &before_);
    }
    ~HostSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

} // namespace corvantile
