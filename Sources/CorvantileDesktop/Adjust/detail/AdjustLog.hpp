#pragma once

#include "CorvantilePlatform/Adjust/ADJConfig.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace corvantile {

// The SDK's lines on the console. Threads: any.
class AdjustLog {
public:
    explicit AdjustLog(std::shared_ptr<Console> console) : console_(std::move(console)) {}

    void setLevel(ADJLogLevel level) { level_.store(level, std::memory_order_relaxed); }
    [[nodiscard]] bool isVerbose() const {
        return level_.load(std::memory_order_relaxed) == ADJLogLevel::verbose;
    }

    // A fault of the host, the server or the network: said at every level but `suppress`. `text` goes on from
    // "Adjust".
    void fault(const std::string& text) const {
        if (level_.load(std::memory_order_relaxed) != ADJLogLevel::suppress) print(text);
    }
    // The ordinary course of things. Ask `isVerbose` before making an expensive text.
    void detail(const std::string& text) const {
        if (isVerbose()) print(text);
    }

private:
    void print(const std::string& text) const { console_->print("Corvantile: Adjust " + text); }

    const std::shared_ptr<Console> console_;
    std::atomic<ADJLogLevel> level_{ADJLogLevel::info};
};

} // namespace corvantile
