#pragma once

#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::tool {

// What a sink does with an event.
struct SinkAnswer {
    std::string sink;
    bool isAccepted = true; // false: the event is on the sink's list of ignored events
    std::optional<std::string> token =
        {};                        // of a sink that sends tokens; empty where it has none for the event
    bool registersAtLaunch = true; // false: a command has to register it first
};

// The sinks of an app, made as a launch makes them, to be asked about events; nothing is sent. Installs a
// platform: one on a main thread that has none.
class AppSinks {
public:
    explicit AppSinks(const AppDescription& app);
    AppSinks(const AppSinks&) = delete;
    AppSinks& operator=(const AppSinks&) = delete;
    ~AppSinks();

    [[nodiscard]] std::vector<SinkAnswer> answersTo(const std::string& event) const;
    // Subscription reports have no name: every sink gets them.
    [[nodiscard]] std::vector<SinkAnswer> answersToSubscriptions() const;

private:
    struct Made {
        SinkDescription description;
        std::shared_ptr<AnalyticComponent> sink;
    };

    const TemporaryFolder folder_;
    Reporter silence_;
    DesktopPlatform platform_;
    std::vector<Made> sinks_;
};

// `console`, `backend ignores it`, `adjust with token t1r2i3`, `adjust has no token for it`.
[[nodiscard]] std::string describe(const SinkAnswer& answer);
[[nodiscard]] EventValue::Map fieldsOf(const SinkAnswer& answer);

} // namespace corvantile::tool
