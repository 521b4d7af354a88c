#include "CorvantileDesktop/detail/DesktopParts.hpp"
#include "CorvantilePlatform/Adjust/Adjust.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

#include <atomic>
#include <utility>

namespace corvantile {

namespace {

// Takes everything and keeps nothing. It reports that once, whatever the log level: silence would look like
// an event that is on its way.
class LeftOutAdjust final : public Adjust {
public:
    explicit LeftOutAdjust(std::shared_ptr<Console> console) : console_(std::move(console)) {}

    [[nodiscard]] std::shared_ptr<ADJConfig> makeConfig(const std::string& appToken,
                                                        const std::string& environment) override {
        return std::make_shared<ADJConfig>(appToken, environment);
    }
    void launch(std::shared_ptr<ADJConfig>) override { report(); }
    void send(const ADJEvent&) override { report(); }
    void send(const ADJSubscription&) override { report(); }
    void setPushToken(const std::vector<std::uint8_t>&) override {}

private:
    void report() {
        if (!hasReported_.exchange(true))
            console_->print("Corvantile: Adjust delivers nothing: the desktop platform was built with "
                            "CORVANTILE_DESKTOP_OUTBOX off.");
    }

    const std::shared_ptr<Console> console_;
    std::atomic<bool> hasReported_{false};
};

} // namespace

void DesktopPlatform::Parts::addAdjust(Ports& made, const DesktopOptions&) {
    made.adjust = std::make_shared<LeftOutAdjust>(made.console);
}

} // namespace corvantile
