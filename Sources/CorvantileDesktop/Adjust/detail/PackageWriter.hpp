#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantileDesktop/Adjust/detail/PackageIdentifiers.hpp"
#include "CorvantileDesktop/Adjust/detail/PackageSender.hpp"
#include "CorvantilePlatform/Adjust/ADJEvent.hpp"
#include "CorvantilePlatform/Adjust/ADJSubscription.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace corvantile {

class SecureRandom;

// Puts packages in the form in which they are posted. Threads: one at a time.
class PackageWriter {
public:
    PackageWriter(PackageSender sender, std::shared_ptr<SecureRandom> random);

    // Lower-case hex; goes with every package from now on.
    void setPushToken(std::string hex);

    [[nodiscard]] OutboxPackage session(std::int64_t count, Date now);
    // Without the revenue, if it is not fit to be sent.
    [[nodiscard]] OutboxPackage event(const ADJEvent& event, bool withRevenue, Date now);
    [[nodiscard]] OutboxPackage subscription(const ADJSubscription& subscription, Date now);

private:
    [[nodiscard]] OutboxPackage begin(PackageKind kind, Date now);
    void compose();

    const PackageSender sender_;
    PackageIdentifiers identifiers_;
    std::string pushToken_;
    std::string common_; // the fields of every package, made once
};

[[nodiscard]] std::string lowerCaseHex(const std::vector<std::uint8_t>& bytes);

} // namespace corvantile
