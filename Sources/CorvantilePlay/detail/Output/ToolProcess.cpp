#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include "CorvantilePlay/detail/Output/StandardOutput.hpp"

#include <csignal>

namespace corvantile::tool {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void note(int) { interrupted = 1; }

} // namespace

void installSignalHandler() {
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool isInterrupted() { return interrupted != 0; }

bool mustStop() { return isInterrupted() || hasStandardOutputFailed(); }

} // namespace corvantile::tool
