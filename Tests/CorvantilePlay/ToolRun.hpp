#pragma once

#include "Tests/CorvantilePlay/SampleFolder.hpp"

#include <array>
#include <cstdio>
#include <iterator>

#include <sys/wait.h>

namespace corvantile::tool {

struct Outcome {
    int exitCode = -1; // as a shell shows it: 128 more than the signal that ended the tool
    std::string output;
    std::string errors;
};

// Runs the tool that was built beside this test in a shell, with a state folder of its own for the user.
class ToolRun {
public:
    // `redirection` comes after the arguments.
    Outcome operator()(const std::string& arguments, const std::string& input = "",
                       const std::string& redirection = "") const {
        return shell("printf '" + input + "' | " + tool() + " " + arguments + " " + redirection);
    }

    [[nodiscard]] Outcome shell(const std::string& line) const {
        const auto errors = folder_.app() / "errors.txt";
        const auto all = "{ " + line + "\n} 2> '" + errors.string() + "'";
        ::setenv("XDG_STATE_HOME", folder_.state().c_str(), 1);
        std::FILE* const stream = ::popen(all.c_str(), "r");
        Outcome outcome;
        std::array<char, 4096> bytes;
        while (const auto count = std::fread(bytes.data(), 1, bytes.size(), stream))
            outcome.output.append(bytes.data(), count);
        const int status = ::pclose(stream);
        if (WIFEXITED(status)) outcome.exitCode = WEXITSTATUS(status);
        std::ifstream file(errors);
        outcome.errors.assign(std::istreambuf_iterator<char>(file), {});
        return outcome;
    }

    [[nodiscard]] static std::string tool() {
        const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
        return "'" + (folder / "../../Tools/corvantile/corvantile").string() + "'";
    }

private:
    SampleFolder folder_;
};

} // namespace corvantile::tool
