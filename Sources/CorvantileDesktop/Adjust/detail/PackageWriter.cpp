#include "CorvantileDesktop/Adjust/detail/PackageWriter.hpp"

#include "CorvantileDesktop/Adjust/detail/FormText.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"

#include <array>
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

} // namespace

PackageWriter::PackageWriter(PackageSender sender, std::shared_ptr<SecureRandom> random)
    : sender_(std::move(sender)), identifiers_(std::move(random)) {
    compose();
}

void PackageWriter::setPushToken(std::string hex) {
    pushToken_ = std::move(hex);
    compose();
}

void PackageWriter::compose() {
    common_ = "s2s=1";
    appendFormField(common_, "app_token", sender_.appToken);
    appendFormField(common_, "environment", sender_.environment);
    appendFormField(common_, "idfa", sender_.idfa);
    appendFormField(common_, "idfv", sender_.idfv);
    appendFormField(common_, "push_token", pushToken_);
}

OutboxPackage PackageWriter::begin(PackageKind kind, Date now) {
    OutboxPackage package;
    package.identifier = identifiers_.next();
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
    appendFormField(package.form, "os_version", sender_.systemVersion);
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
