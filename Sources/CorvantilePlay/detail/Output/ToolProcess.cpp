#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include "CorvantilePlay/detail/Output/StandardOutput.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>

#include <sys/prctl.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define CORVANTILE_HAS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define CORVANTILE_HAS_SANITIZER 1
#endif
#endif

namespace corvantile::tool {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void note(int) { interrupted = 1; }

// Prints the exception that is being handled.
ExitCode statusOfException() {
    try {
        throw;
    } catch (const UsageError& error) {
        printError(error.what());
        return ExitCode::usage;
    } catch (const std::bad_alloc&) {
        printError("there is not enough memory");
    } catch (const std::exception& error) { // of the machine: no folder for temporary files
        printError(error.what());
    } catch (...) { // of a host's own plug-in
        printError("an exception without a text ended the call");
    }
    return ExitCode::failed;
}

[[noreturn]] void endProcess() {
    if (!std::current_exception()) std::abort();
    ::_exit(static_cast<int>(statusOfException()));
}

} // namespace

ExitCode endingWithStatus(const std::function<ExitCode()>& run) {
    std::set_terminate(endProcess);
    try {
        return run();
    } catch (...) {
        return statusOfException();
    }
}

void printError(std::string_view text) { std::cerr << "corvantile: " << visibleText(text, 2) << '\n'; }

void forbidMemoryDumps() {
#ifndef CORVANTILE_HAS_SANITIZER
    ::prctl(PR_SET_DUMPABLE, 0);
#endif
}

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
