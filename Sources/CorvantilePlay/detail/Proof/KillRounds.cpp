#include "CorvantilePlay/detail/Proof/KillRounds.hpp"

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"
#include "CorvantilePlay/detail/Proof/PurchaseScenario.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvantile::tool {

namespace fs = std::filesystem;

namespace {

// How a process of the tool has ended.
struct ProcessEnd {
    pid_t process = -1;
    bool wasKilled = false;        // by SIGKILL
    std::optional<int> exitCode{}; // none when a signal ended it
};

// Runs the tool itself with these arguments, what it prints going to `output`. A UsageError when it cannot.
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

// Waits for the end of any process that was started so; there is one.
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

constexpr std::size_t atOnce = 2;

std::string textOf(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

fs::path outputIn(const fs::path& folder) { return folder / "output.txt"; }

std::string whatItSaid(const fs::path& folder) {
    auto text = textOf(outputIn(folder));
    while (text.ends_with('\n')) text.pop_back();
    return text.empty() ? "" : ": " + text;
}

} // namespace

struct KillRounds::Running {
    KillRound round;
    bool isSettling = false;
};

KillRounds::KillRounds(fs::path folder, bool atLeastOnce)
    : folder_(std::move(folder)), atLeastOnce_(atLeastOnce) {
    std::ofstream(folder_ / "catalogue.storekit") << scenarioCatalogue();
}

fs::path KillRounds::folderOf(const KillRound& round) const { return folder_ / std::to_string(round.number); }

std::vector<std::string> KillRounds::arguments(const fs::path& folder) const {
    fs::create_directory(folder);
    std::vector<std::string> made{"prove-process", "--folder", folder.string(), "--catalogue",
                                  (folder_ / "catalogue.storekit").string()};
    if (atLeastOnce_) made.emplace_back("--at-least-once");
    return made;
}

// On a folder whose process has ended by itself.
ProofVerdict KillRounds::verdictOn(const fs::path& folder, std::optional<int> exitCode) const {
    if (exitCode == 0) return judge(folder, atLeastOnce_);
    return {.faults = {"the scenario did not settle" + whatItSaid(folder)}};
}

ProofVerdict KillRounds::rehearse() {
    const auto folder = folder_ / "rehearsal";
    const auto noted = folder_ / "moments.txt";
    auto call = arguments(folder);
    call.insert(call.end(), {"--moments", noted.string()});
    static_cast<void>(startTool(call, outputIn(folder)));
    auto verdict = verdictOn(folder, awaitTool().exitCode);
    std::ifstream stream(noted);
    for (std::string moment; std::getline(stream, moment);) moments_.push_back(moment);
    return verdict;
}

void KillRounds::run(std::size_t step, const std::function<void(const KillRound&)>& judged) {
    std::map<pid_t, Running> running;
    std::map<std::size_t, KillRound> finished; // that wait for an earlier one
    std::size_t next = 0;
    std::size_t reported = 0;
    const auto start = [&](Running job) {
        const auto folder = folderOf(job.round);
        auto call = arguments(folder);
        if (!job.isSettling) call.insert(call.end(), {"--kill", job.round.moment});
        running.emplace(startTool(call, outputIn(folder)), std::move(job));
    };
    const auto finish = [&](KillRound round) {
        fs::remove_all(folderOf(round));
        const auto number = round.number;
        finished.emplace(number, std::move(round));
        for (; !finished.empty() && finished.begin()->first == reported + 1; reported += step) {
            judged(finished.begin()->second);
            finished.erase(finished.begin());
        }
    };
    for (;;) {
        for (; running.size() < atOnce && next < moments_.size() && !mustStop(); next += step)
            start({.round = {.number = next + 1, .moment = moments_[next]}});
        if (running.empty()) return;
        const auto end = awaitTool();
        auto job = std::move(running.extract(end.process).mapped());
        if (!job.isSettling && end.wasKilled) {
            job.isSettling = true;
            start(std::move(job));
            continue;
        }
        job.round.verdict =
            job.isSettling
                ? verdictOn(folderOf(job.round), end.exitCode)
                : ProofVerdict{.faults = {"the moment did not come" + whatItSaid(folderOf(job.round))}};
        finish(std::move(job.round));
    }
}

} // namespace corvantile::tool
