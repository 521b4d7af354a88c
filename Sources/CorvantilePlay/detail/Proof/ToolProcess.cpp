#include "CorvantilePlay/detail/Proof/ToolProcess.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvantile::tool {

pid_t startTool(const std::vector<std::string>& arguments, const std::filesystem::path& output) {
    constexpr const char* self = "/proc/self/exe";
    std::vector<char*> texts{const_cast<char*>("corvantile")};
    texts.reserve(arguments.size() + 2);
    for (const auto& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
    texts.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    constexpr mode_t forTheUser = 0600;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                     forTheUser);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t process = -1;
    const int error = ::posix_spawn(&process, self, &actions, nullptr, texts.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw UsageError(std::string("a process cannot be started: ") + std::strerror(error));
    return process;
}

ProcessEnd awaitTool() {
    int status = 0;
    ProcessEnd end;
    do {
        end.process = ::waitpid(-1, &status, 0);
    } while (end.process < 0 && errno == EINTR);
    end.wasKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    if (WIFEXITED(status)) end.exitCode = WEXITSTATUS(status);
    return end;
}

} // namespace corvantile::tool
