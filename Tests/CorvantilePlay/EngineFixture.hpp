#pragma once

#include "CorvantilePlay/detail/Commands/Engine.hpp"
#include "Tests/CorvantilePlay/SampleFolder.hpp"

#include <algorithm>

namespace corvantile::tool {

using Texts = std::vector<std::string>;

// An engine whose events a test looks at; `begin` makes it.
class EngineFixture : public testing::Test {
protected:
    void begin(const char* app, PlayRegistry::LaunchSwitches switches = {}) {
        folder_.write("app.json", app);
        begin(folder_.app(), switches);
    }
    void begin(const std::filesystem::path& app, PlayRegistry::LaunchSwitches switches = {}) {
        engine_.reset();
        engine_.emplace(readAppDescription(app, registry_),
                        HostOptions{.stateFolder = folder_.state(), .switches = switches},
                        [this](const PlayEvent& event) {
                            const std::lock_guard lock(mutex_);
                            events_.push_back(event);
                        });
    }

    // Each line has to be played without an error.
    void play(const Texts& lines) {
        for (const auto& line : lines)
            EXPECT_TRUE(engine_->play(line)) << line << ": " << events().back().text;
    }

    // What the last of the lines shows last.
    std::string shown(const Texts& lines) {
        play(lines);
        return events().back().text;
    }

    // Runs the app until an event has a text that begins so.
    void awaitText(const std::string& beginning) {
        engine_->runLoop([&] {
            const std::lock_guard lock(mutex_);
            return std::any_of(events_.begin(), events_.end(),
                               [&](const PlayEvent& event) { return event.text.starts_with(beginning); });
        });
    }

    // Why the line cannot be played.
    std::string errorOf(const std::string& line, const Origin& origin = {}) {
        EXPECT_FALSE(engine_->play(line, origin)) << line;
        const auto told = events();
        const auto error = std::find_if(told.rbegin(), told.rend(),
                                        [](const PlayEvent& event) { return event.kind == "error"; });
        return error == told.rend() ? "" : error->text;
    }

    // Lines that cannot be played, and a part of the reason.
    void expectErrors(const std::vector<std::pair<const char*, const char*>>& cases) {
        for (const auto& [line, why] : cases) EXPECT_THAT(errorOf(line), testing::HasSubstr(why)) << line;
    }

    // The texts of one source since the last call; drops those of the others.
    Texts takeTexts(const std::string& who) {
        Texts texts;
        const std::lock_guard lock(mutex_);
        for (const auto& event : std::exchange(events_, {}))
            if (event.who == who) texts.push_back(event.text);
        return texts;
    }

    Engine& engine() { return *engine_; }
    std::vector<PlayEvent> events() const {
        const std::lock_guard lock(mutex_);
        return events_;
    }
    const SampleFolder& folder() const { return folder_; }

    PlayRegistry& registry() { return registry_; }

private:
    SampleFolder folder_;
    PlayRegistry registry_ = PlayRegistry::framework();
    mutable std::mutex mutex_; // what plug-ins print and what a server gets is reported on other threads
    std::vector<PlayEvent> events_;
    std::optional<Engine> engine_;
};

} // namespace corvantile::tool
