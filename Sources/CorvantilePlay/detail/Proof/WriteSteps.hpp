#pragma once

#include "CorvantilePlatform/Platform.hpp"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace corvantile::tool {

// Names the moments before and after everything that a process writes, and kills the process at one of them:
// nothing runs any more, not even a destructor. What the system has taken stays; a power loss is not played.
// Threads: any.
class WriteSteps {
public:
    using Listener = std::function<void(const std::string& moment)>;

    // `fatal`: the moment of the end; empty for none. `tell` may be null.
    WriteSteps(std::string fatal, Listener tell) : fatal_(std::move(fatal)), tell_(std::move(tell)) {}

    // Passes `before WHAT`, calls `write`, and passes `after WHAT`, whose number follows if there are more of
    // the kind.
    template <class Write>
    auto take(const std::string& what, Write write) {
        const Passage passage(*this, what);
        return write();
    }

private:
    class Passage {
    public:
        Passage(WriteSteps& steps, const std::string& what) : steps_(steps), what_(steps.numbered(what)) {
            steps_.pass("before " + what_);
        }
        Passage(const Passage&) = delete;
        Passage& operator=(const Passage&) = delete;
        // A write that has failed is over as well.
        ~Passage() { steps_.pass("after " + what_); }

    private:
        WriteSteps& steps_;
        const std::string what_;
    };

    [[nodiscard]] std::string numbered(const std::string& what);
    void pass(const std::string& moment) const;

    const std::string fatal_;
    const Listener tell_;
    std::mutex mutex_;
    std::map<std::string, int> counts_;
};

// Lets keychain, user defaults and attribution SDK pass `steps` with each thing that they write.
void stepThrough(Ports& ports, const std::shared_ptr<WriteSteps>& steps);

// Makes the app's timers fire so many times as early. What the app waits for by design, a second after each
// launch above all, teaches nothing about what a kill loses.
void speedUpTimers(Ports& ports, int times);

} // namespace corvantile::tool
