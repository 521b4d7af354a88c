#pragma once

#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantileDesktop/Adjust/OutboxEntry.hpp"
#include "CorvantilePlatform/Adjust/Adjust.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace corvantile {

struct Ports;

// The attribution SDK of a desktop. What it accepts is in the outbox (Docs/Files/Outbox.md) when the call
// returns, and goes to the endpoint in the server-to-server form as soon as it may. Besides what the host
// sends, a session begins at launch and whenever the app becomes active after a long rest; the push token
// goes with every package from then on. The app secret and the ad-services token belong to another form, and
// stay here.
// `makeConfig` returns null for a token or an environment that the service does not have.
class CORVANTILE_API OutboxAdjust final : public Adjust {
public:
    // An empty file: packages last as long as the process. Of the ports, it keeps device, queues, clock,
    // console, random, http and advertising; the last may be null.
    OutboxAdjust(const std::filesystem::path& file, AdjustOptions options, const Ports& ports);
    ~OutboxAdjust() override;

    [[nodiscard]] std::shared_ptr<ADJConfig> makeConfig(const std::string& appToken,
                                                        const std::string& environment) override;
    void launch(std::shared_ptr<ADJConfig> config) override;
    void send(const ADJEvent& event) override;
    void send(const ADJSubscription& subscription) override;
    void setPushToken(const std::vector<std::uint8_t>& token) override;

    // Call when the app becomes active and when it resigns (initially active). While it is not active,
    // packages leave only with `sendInBackground`.
    void setActive(bool isActive);

    // Offline, packages stay. Online again, they leave at once, however long the next attempt was to wait.
    void setOnline(bool isOnline);
    [[nodiscard]] bool isOnline() const;

    // What waits, and what was delivered lately.
    [[nodiscard]] std::vector<OutboxEntry> packages() const;
    // Reads a file as it stands; nothing is moved aside.
    [[nodiscard]] static OutboxInspection inspect(const std::filesystem::path& file);

private:
    struct Parts;
    const std::unique_ptr<Parts> parts_;
};

} // namespace corvantile
