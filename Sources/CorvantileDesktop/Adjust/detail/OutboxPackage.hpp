#pragma once

#include "CorvantileDesktop/Adjust/OutboxEntry.hpp"
#include "CorvantilePlatform/Adjust/ADJEvent.hpp"
#include "CorvantilePlatform/Adjust/ADJSubscription.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class ADJConfig;
class ASIdentifierManager;
class SecureRandom;
class UIDevice;

// A package as the outbox keeps it.
struct OutboxPackage {
    std::int64_t number = 0; // its place in the order; 0 while it is in memory alone
    std::string identifier;
    PackageKind kind = PackageKind::event;
    std::string form; // what is posted; of a long one that has been delivered, the beginning
    PackageState state = PackageState::waiting;
    int tries = 0;
    std::optional<DeliveryAnswer> lastAnswer = {};
};

[[nodiscard]] OutboxEntry entryOf(const OutboxPackage& package);

// `event 'abc123' 0C6F…`, for lines.
[[nodiscard]] std::string describe(const OutboxPackage& package);

// The app and the device, as every package names them.
struct AppIdentity {
    std::string appToken, environment;
    std::string idfa, idfv, systemVersion; // empty: unknown or withheld
};

// Reads the advertising identifier only if the configuration allows it; the manager may be null.
[[nodiscard]] AppIdentity makeAppIdentity(const ADJConfig& config, const UIDevice& device,
                                          ASIdentifierManager* advertising);

// Makes packages in the form in which they are posted. Threads: one at a time.
class PackageWriter {
public:
    PackageWriter(AppIdentity identity, std::shared_ptr<SecureRandom> random);

    // Lower-case hex; goes with every package from now on.
    void setPushToken(std::string hex);

    [[nodiscard]] OutboxPackage session(std::int64_t count, Date now);
    // Without the revenue unless it is valid.
    [[nodiscard]] OutboxPackage event(const ADJEvent& event, bool withRevenue, Date now);
    [[nodiscard]] OutboxPackage subscription(const ADJSubscription& subscription, Date now);

private:
    static constexpr std::size_t identifierSize = 16; // bytes
    static constexpr std::size_t identifiersPerRead = 64;

    [[nodiscard]] std::string nextIdentifier();
    [[nodiscard]] OutboxPackage begin(PackageKind kind, Date now);
    void composeCommonFields();

    const AppIdentity identity_;
    const std::shared_ptr<SecureRandom> random_;
    // Random bytes for the next identifiers: one read takes longer than all the rest of making a package.
    std::array<unsigned char, identifierSize * identifiersPerRead> randomBytes_{};
    std::size_t usedIdentifiers_ = identifiersPerRead;
    std::string pushToken_;
    std::string common_; // the fields of every package, made once
};

[[nodiscard]] std::string lowerCaseHex(const std::vector<std::uint8_t>& bytes);

} // namespace corvantile
