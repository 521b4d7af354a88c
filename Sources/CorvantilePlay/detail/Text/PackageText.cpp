#include "CorvantilePlay/detail/Text/PackageText.hpp"

#include "CorvantilePlay/detail/Text/TerminalText.hpp"

namespace corvantile::tool {

namespace {

std::string describeTries(const OutboxEntry& package) {
    if (package.tries == 0) return {};
    const auto tries = std::to_string(package.tries);
    return package.state == PackageState::waiting ? " after try " + tries : " at try " + tries;
}

std::string describeAnswer(const DeliveryAnswer& answer) {
    if (!answer.status) return ", no answer: " + answer.text;
    return ", answer " + std::to_string(*answer.status) +
           (answer.text.empty() ? "" : " " + shortened(answer.text));
}

} // namespace

std::string_view describe(PackageKind kind) {
    switch (kind) {
    case PackageKind::session: return "session";
    case PackageKind::event: return "event";
    case PackageKind::subscription: return "subscription";
    }
    return "package";
}

std::string_view describe(PackageState state) {
    switch (state) {
    case PackageState::waiting: return "waiting";
    case PackageState::sent: return "sent";
    case PackageState::refused: return "refused";
    }
    return "unknown";
}

std::string describe(const OutboxEntry& package) {
    std::string text(describe(package.kind));
    for (const auto* const part :
         {&package.eventToken, &package.revenue, &package.currency, &package.transactionId})
        if (!part->empty()) text.append(" ").append(*part);
    text.append(": ").append(describe(package.state)).append(describeTries(package));
    return package.lastAnswer ? text + describeAnswer(*package.lastAnswer) : text;
}

EventValue::Map fieldsOf(const OutboxEntry& package) {
    EventValue::Map fields{{"identifier", package.identifier},
                           {"type", std::string(describe(package.kind))},
                           {"created", package.created},
                           {"tries", package.tries},
                           {"state", std::string(describe(package.state))}};
    const auto add = [&fields](const char* name, const std::string& value) {
        if (!value.empty()) fields.emplace(name, value);
    };
    add("token", package.eventToken);
    add("revenue", package.revenue);
    add("currency", package.currency);
    add("transaction", package.transactionId);
    if (!package.lastAnswer) return fields;
    if (package.lastAnswer->status) fields.emplace("httpStatus", *package.lastAnswer->status);
    add("answer", package.lastAnswer->text);
    return fields;
}

} // namespace corvantile::tool
