#pragma once

#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlay/detail/Proof/ScenarioPlay.hpp"
#include "CorvantilePlay/detail/Proof/WriteSteps.hpp"
#include "CorvantileReactive/DisposeBag.hpp"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace corvantile {
class AnalyticPlugin;
} // namespace corvantile

namespace corvantile::tool {

// The app that the proof plays, in this process: it sells the scenario's products and reports to two sinks,
// the attribution SDK and a file. Each thing that it writes is one of `steps`. Threads: main.
class ProofApp {
public:
    ProofApp(const ScenarioOptions& options, std::shared_ptr<WriteSteps> steps);
    ProofApp(const ProofApp&) = delete;
    ProofApp& operator=(const ProofApp&) = delete;
    ~ProofApp();

    // Up to the first activation.
    void launch();

    // Goes on until `done` holds. Throws std::runtime_error if that takes too long.
    void await(const std::function<bool()>& done, const std::string& what);

    // How many lines the last sink has got so far, which all have by then.
    [[nodiscard]] int heard() const { return heard_.load(); }

    [[nodiscard]] DesktopPlatform& platform() { return platform_; }

private:
    void registerSinks(AnalyticPlugin& router);

    const ScenarioOptions options_;
    const std::shared_ptr<WriteSteps> steps_;
    std::atomic<bool> isLoaded_{false};
    std::atomic<int> heard_{0};
    DesktopPlatform platform_; // whose threads use what is above
    rx::DisposeBag bag_;
};

} // namespace corvantile::tool
