#pragma once

#include "Platform/Foundation/Console.hpp"

#include <atomic>
#include <cstddef>
#include <string_view>

namespace corvantile::tool {

class Reporter;

// Makes a happening of each text that the framework prints.
class ReportingConsole final : public Console {
public:
    explicit ReportingConsole(Reporter& reporter);
    ~ReportingConsole() override;

    void print(std::string_view text) override;

    // How many of them were events, in the frame that console sinks print.
    [[nodiscard]] std::size_t eventCount() const { return eventCount_.load(); }

private:
    Reporter& reporter_;
    std::atomic<std::size_t> eventCount_{0};
};

} // namespace corvantile::tool
