#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"

#include "CorvantileDesktop/Adjust/detail/FormText.hpp"

#include <charconv>
#include <utility>

namespace corvantile {

OutboxEntry entryOf(const OutboxPackage& package) {
    auto fields = formFields(package.form);
    OutboxEntry entry{.identifier = package.identifier,
                      .kind = package.kind,
                      .eventToken = std::move(fields["event_token"]),
                      .revenue = std::move(fields["revenue"]),
                      .currency = std::move(fields["currency"]),
                      .transactionId = std::move(fields["transaction_id"]),
                      .created = {},
                      .state = package.state,
                      .tries = package.tries,
                      .lastAnswer = package.lastAnswer};
    const auto& created = fields["created_at_unix"];
    std::int64_t seconds = 0;
    std::from_chars(created.data(), created.data() + created.size(), seconds);
    entry.created = Date::fromUnixSeconds(static_cast<double>(seconds));
    return entry;
}

std::string describe(const OutboxPackage& package) {
    switch (package.kind) {
    case PackageKind::session: return "session " + package.identifier;
    case PackageKind::event:
        return "event '" + formField(package.form, "event_token") + "' " + package.identifier;
    case PackageKind::subscription: break;
    }
    return "subscription " + package.identifier;
}

} // namespace corvantile
