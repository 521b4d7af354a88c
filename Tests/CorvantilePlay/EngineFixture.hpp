#pragma once

#include "CorvantilePlay/detail/Commands/Engine.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "Tests/CorvantilePlay/SampleFolder.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::tool {

using Texts = std::vector<std::string>;

// An engine whose happenings a test looks at; `begin` makes it.
class EngineFixture : public testing::Test {
protected:
    void begin(const char* app, LaunchSwitches switches = {}) {
        folder_.write("app.json", app);
        begin(folder_.app(), switches);
    }
    void begin(const std::filesystem::path& app, LaunchSwitches switches = {}) {
        engine_.reset();
        engine_.emplace(readAppDescription(app, frameworkRegistry()),
                        HostOptions{.stateFolder = folder_.state(), .switches = switches},
                        [this](const Happening& happening) {
                            const std::lock_guard lock(mutex_);
                            happenings_.push_back(happening);
                        });
    }

    // Each line has to be played without a fault.
    void play(const Texts& lines) {
        for (const auto& line : lines)
            EXPECT_TRUE(engine_->play(line)) << line << ": " << happenings().back().text;
    }

    // Lets the app go on until one of these who tell has told a text that begins so.
    void awaitText(const std::string& beginning) {
        engine_->goOn([&] {
            const std::lock_guard lock(mutex_);
            return std::any_of(happenings_.begin(), happenings_.end(), [&](const Happening& happening) {
                return happening.text.starts_with(beginning);
            });
        });
    }

    // Why the line cannot be played.
    std::string refusal(const std::string& line, const Origin& origin = {}) {
        EXPECT_FALSE(engine_->play(line, origin)) << line;
        const auto told = happenings();
        const auto error = std::find_if(told.rbegin(), told.rend(),
                                        [](const Happening& happening) { return happening.kind == "error"; });
        return error == told.rend() ? "" : error->text;
    }

    // Lines that cannot be played, and a part of the reason.
    void expectRefusals(const std::vector<std::pair<const char*, const char*>>& cases) {
        for (const auto& [line, why] : cases) EXPECT_THAT(refusal(line), testing::HasSubstr(why)) << line;
    }

    // What has been told since this was last asked, by one of those who tell.
    Texts takeTold(const std::string& who) {
        Texts texts;
        const std::lock_guard lock(mutex_);
        for (const auto& happening : std::exchange(happenings_, {}))
            if (happening.who == who) texts.push_back(happening.text);
        return texts;
    }

    Engine& engine() { return *engine_; }
    std::vector<Happening> happenings() const {
        const std::lock_guard lock(mutex_);
        return happenings_;
    }
    const SampleFolder& folder() const { return folder_; }

private:
    SampleFolder folder_;
    mutable std::mutex mutex_; // what plug-ins print and what a server gets is told on other threads
    std::vector<Happening> happenings_;
    std::optional<Engine> engine_;
};

} // namespace corvantile::tool
