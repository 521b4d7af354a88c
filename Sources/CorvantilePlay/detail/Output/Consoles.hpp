#pragma once

#include "CorvantilePlatform/Foundation/Console.hpp"

#include <cstddef>
#include <string_view>

namespace corvantile::tool {

class Reporter;

// Makes an event of each text that the framework prints.
class ReportingConsole final : public Console {
public:
    explicit ReportingConsole(Reporter& reporter);
    ~ReportingConsole() override;

    void print(std::string_view text) override;

    // How many events, in the frame of console sinks, this thread has printed on any such console. A sink
    // prints on the thread that tracks.
    [[nodiscard]] static std::size_t eventsOfThisThread();

private:
    Reporter& reporter_;
};

class SilentConsole final : public Console {
public:
    void print(std::string_view) override {}
};

} // namespace corvantile::tool
