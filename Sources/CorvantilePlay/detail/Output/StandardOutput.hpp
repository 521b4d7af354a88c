#pragma once

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"

#include <array>
#include <streambuf>

namespace corvantile::tool {

// Takes the place of std::cout's buffer and remembers the first write that fails; what is printed after it is
// dropped. One object, in `main`. Threads: as std::cout, one at a time.
class StandardOutput final : public std::streambuf {
public:
    // Ignores SIGPIPE, which the sockets of this process would raise as well as standard output. Opens
    // standard streams that the caller has closed, so that no file of ours gets their numbers.
    StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() override;

    // Writes what is left. Returns `code` if everything was written. A closed pipe ends the process by
    // SIGPIPE, without a word; any other error is printed on standard error and becomes `ExitCode::output`.
    [[nodiscard]] ExitCode close(ExitCode code);

protected:
    int_type overflow(int_type character) override;
    int sync() override;

private:
    std::streambuf* const before_;
    std::array<char, 8192> bytes_{};
};

// A write has failed: nothing that is printed reaches anybody. Threads: any.
[[nodiscard]] bool hasStandardOutputFailed();

// Standard error and standard output are one terminal, file or pipe, so that an error on both would be read
// twice.
[[nodiscard]] bool areStandardStreamsOne();

} // namespace corvantile::tool
