#pragma once

#include "CorvantilePlatform/Foundation/Console.hpp"

#include <mutex>
#include <string>
#include <string_view>

namespace corvantile {

// Writes each text with its line feed in one go to a descriptor, which is borrowed. Waits where a blocking
// descriptor would; a reader that has gone makes it silent and raises no signal.
class DescriptorConsole final : public Console {
public:
    explicit DescriptorConsole(int descriptor) : descriptor_(descriptor) {}

    void print(std::string_view text) override;

private:
    const int descriptor_;
    std::mutex mutex_;
    std::string line_; // kept for its memory
};

} // namespace corvantile
