#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"

#include "CorvantileDesktop/Adjust/detail/FormText.hpp"
#include "CorvantilePlatform/Adjust/ADJConfig.hpp"
#include "CorvantilePlatform/Ads/ASIdentifierManager.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"
#include "CorvantilePlatform/Foundation/detail/UUID.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace corvantile {

namespace {

constexpr std::size_t ordinaryLength = 512; // of a form without a receipt; more only costs a moment

// Five decimals, whatever the locale.
std::string revenueText(double amount) {
    std::array<char, 400> text{}; // the largest double has 309 digits before its point
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), amount, std::chars_format::fixed, 5);
    return {text.data(), end};
}

std::string identifierForAdvertising(ASIdentifierManager* manager) {
    if (manager == nullptr) return {};
    auto identifier = manager->advertisingIdentifier();
    return identifier == ASIdentifierManager::withheldIdentifier ? "" : identifier;
}

} // namespace

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

AppIdentity makeAppIdentity(const ADJConfig& config, const UIDevice& device,
                            ASIdentifierManager* advertising) {
    return {.appToken = config.appToken().value_or(""),
            .environment = config.environment().value_or(""),
            .idfa = config.allowIdfaReading() ? identifierForAdvertising(advertising) : "",
            .idfv = device.identifierForVendor().value_or(""),
            .systemVersion = device.systemVersion()};
}

PackageWriter::PackageWriter(AppIdentity identity, std::shared_ptr<SecureRandom> random)
    : identity_(std::move(identity)), random_(std::move(random)) {
    composeCommonFields();
}

void PackageWriter::setPushToken(std::string hex) {
    pushToken_ = std::move(hex);
    composeCommonFields();
}

void PackageWriter::composeCommonFields() {
    common_ = "s2s=1";
    appendFormField(common_, "app_token", identity_.appToken);
    appendFormField(common_, "environment", identity_.environment);
    appendFormField(common_, "idfa", identity_.idfa);
    appendFormField(common_, "idfv", identity_.idfv);
    appendFormField(common_, "push_token", pushToken_);
}

std::string PackageWriter::nextIdentifier() {
    if (usedIdentifiers_ == identifiersPerRead) {
        random_->copyBytes(randomBytes_.data(), randomBytes_.size());
        usedIdentifiers_ = 0;
    }
    std::array<unsigned char, identifierSize> bytes{};
    std::copy_n(randomBytes_.data() + usedIdentifiers_++ * identifierSize, identifierSize, bytes.data());
    return uuidText(bytes);
}

OutboxPackage PackageWriter::begin(PackageKind kind, Date now) {
    OutboxPackage package;
    package.identifier = nextIdentifier();
    package.kind = kind;
    package.form.reserve(ordinaryLength);
    package.form = common_;
    const auto seconds = static_cast<std::int64_t>(std::floor(now.secondsSinceUnixEpoch()));
    appendFormField(package.form, "created_at_unix", std::to_string(seconds));
    appendFormField(package.form, "package_id", package.identifier);
    return package;
}

OutboxPackage PackageWriter::session(std::int64_t count, Date now) {
    auto package = begin(PackageKind::session, now);
    appendFormField(package.form, "session_count", std::to_string(count));
    appendFormField(package.form, "os_version", identity_.systemVersion);
    return package;
}

OutboxPackage PackageWriter::event(const ADJEvent& event, bool withRevenue, Date now) {
    auto package = begin(PackageKind::event, now);
    appendFormField(package.form, "event_token", event.eventToken());
    if (!withRevenue) return package;
    appendFormField(package.form, "revenue", revenueText(event.revenue()->amount));
    appendFormField(package.form, "currency", event.revenue()->currency);
    return package;
}

// The receipt comes last, for it is what a delivered package may lose.
OutboxPackage PackageWriter::subscription(const ADJSubscription& subscription, Date now) {
    auto package = begin(PackageKind::subscription, now);
    auto& form = package.form;
    appendFormField(form, "revenue", subscription.price().description());
    appendFormField(form, "currency", subscription.currency());
    appendFormField(form, "transaction_id", subscription.transactionId());
    if (const auto& date = subscription.transactionDate())
        appendFormField(form, "transaction_date", isoTimestamp(*date) + "+0000");
    appendFormField(form, "sales_region", subscription.salesRegion().value_or(""));
    appendFormField(form, "billing_store", "iOS");
    appendFormField(form, "receipt", base64(subscription.receipt()));
    return package;
}

std::string lowerCaseHex(const std::vector<std::uint8_t>& bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const auto byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

} // namespace corvantile
