#pragma once

#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace corvantile::tool {

// Where a command comes from.
struct Origin {
    std::string who = "you"; // shown with the command
    std::string place = {};  // `tour.play:12`, named where a command is at fault; empty: nowhere to name
};

// The play without a format: command lines in, events out.
// Threads: `play` and `runLoop` on the thread that made the engine, which is the app's main thread; events
// as Reporter says.
class Engine {
public:
    Engine(AppDescription app, HostOptions options, Reporter::Listener listener);

    // False when the command could not be played; an "error" then tells why, and the play can go on.
    bool play(std::string_view line, const Origin& origin = {});

    // All that `play` understands.
    [[nodiscard]] const CommandTable& commands() const { return commands_; }

    [[nodiscard]] const AppDescription& app() const { return host_.app(); }

    // `quit` was played.
    [[nodiscard]] bool isOver() const { return isOver_; }

    // Lets the app go on until `done` holds or an interruption comes.
    void runLoop(const std::function<bool()>& done);

private:
    [[nodiscard]] std::vector<Command> conversation();
    void run(std::string_view line, const Origin& origin);
    void help(Arguments given);
    void helpWithAll();
    void helpWith(const Command& command, std::size_t width);

    Reporter reporter_;
    Host host_;
    CommandTable commands_;
    Origin origin_; // of the command that is played
    bool isOver_ = false;
};

} // namespace corvantile::tool
