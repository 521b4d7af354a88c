#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"

#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxDelivery.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantileDesktop/Adjust/detail/ServerAnswer.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace corvantile {

namespace {

constexpr std::size_t appTokenLength = 12; // UTF-16 units

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        units += scalar.value > 0xFFFF ? 2 : 1;
        text.remove_prefix(scalar.length);
    }
    return units;
}

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

// What is wrong with what the host gave, to follow "… because "; nullopt when it is right.

std::optional<std::string> faultOfAppToken(std::string_view token) {
    if (token.empty()) return "the app token is missing";
    const auto length = utf16Length(token);
    if (length == appTokenLength) return std::nullopt;
    return "the app token " + quoted(token) + " has " + std::to_string(length) + " characters, not " +
           std::to_string(appTokenLength);
}

std::optional<std::string> faultOfEnvironment(std::string_view environment) {
    if (environment == ADJEnvironmentSandbox || environment == ADJEnvironmentProduction) return std::nullopt;
    if (environment.empty()) return "the environment is missing";
    return "the environment " + quoted(environment) + " is neither " + quoted(ADJEnvironmentSandbox) +
           " nor " + quoted(ADJEnvironmentProduction);
}

std::optional<std::string> faultOfRevenue(const ADJRevenue& revenue) {
    if (!std::isfinite(revenue.amount)) return "its amount is no number";
    if (revenue.amount < 0) return "its amount is negative";
    if (revenue.currency.empty()) return "its currency is missing";
    return std::nullopt;
}

std::string orVariable(std::string given, const char* name) {
    if (!given.empty()) return given;
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

AdjustOptions withEnvironment(AdjustOptions options) {
    options.endpoint = orVariable(std::move(options.endpoint), "CORVANTILE_ADJUST_ENDPOINT");
    options.bearerToken = orVariable(std::move(options.bearerToken), "CORVANTILE_ADJUST_TOKEN");
    while (options.endpoint.ends_with('/')) options.endpoint.pop_back();
    return options;
}

struct OutboxAdjust::Parts {
    Parts(const std::filesystem::path& file, AdjustOptions given, const Ports& ports)
        : options(withEnvironment(std::move(given))),
          device(ports.device),
          advertising(ports.advertising),
          clock(ports.clock),
          random(ports.random),
          log(std::make_shared<AdjustLog>(ports.console)),
          isOnline(!options.isOffline) {
        const auto queue = ports.queues->makeSerial("corvantile.adjust", QualityOfService::background);
        outbox = std::make_shared<Outbox>(file, ports.console, [queue](std::function<void()> work) {
            queue->asyncAfter(logRest, std::move(work));
        });
        reporter = std::make_shared<DelegateReporter>(outbox, ports.queues->main());
        delivery = std::make_shared<OutboxDelivery>(
            DeliveryOptions{.endpoint = options.endpoint,
                            .bearerToken = options.bearerToken,
                            .outbox = outbox,
                            .http = ports.http,
                            .random = random,
                            .log = log,
                            .queue = queue,
                            .report = [reporter = reporter](const auto& package, const auto& answer) {
                                reporter->report(package, answer);
                            }});
    }

    // What follows with the mutex held.

    void start(const ADJConfig& config) {
        log->setLevel(config.logLevel());
        sendsInBackground = config.sendInBackground();
        reporter->setDelegate(config.delegate());
        writer.emplace(makeAppIdentity(config, *device, advertising.get()), random);
        usePushToken();
        beActive();
    }

    void usePushToken() {
        const auto last = outbox->remembered(outboxmemory::pushToken);
        if (!pushToken.empty() && pushToken != last) outbox->remember(outboxmemory::pushToken, pushToken);
        writer->setPushToken(pushToken.empty() ? last.value_or("") : pushToken);
    }

    void beActive() {
        const auto now = clock->now();
        outbox->addSession(now, [&](std::int64_t count) {
            auto package = writer->session(count, now);
            if (log->isVerbose()) log->detail("queues " + describe(package) + ".");
            return package;
        });
        update();
    }

    void update() {
        delivery->setEnabled(writer && isOnline && (isActive || sendsInBackground) &&
                             !options.endpoint.empty());
        delivery->wake();
    }

    [[nodiscard]] bool hasValidRevenue(const ADJEvent& event) const {
        if (!event.revenue()) return false;
        const auto fault = faultOfRevenue(*event.revenue());
        if (fault)
            log->error("sends the event '" + event.eventToken() + "' without its revenue, because " + *fault +
                       ".");
        return !fault;
    }

    void add(OutboxPackage package, const std::string& transactionId) {
        const auto name = log->isVerbose() ? describe(package) : "";
        if (transactionId.empty())
            outbox->add(std::move(package));
        else if (!outbox->addUnlessRepeated(package, transactionId))
            return log->error("skips an event: its transaction '" + transactionId +
                              "' has been sent before.");
        if (log->isVerbose()) log->detail("has queued " + name + ".");
        delivery->wake();
    }

    const AdjustOptions options;
    const std::shared_ptr<UIDevice> device;
    const std::shared_ptr<ASIdentifierManager> advertising;
    const std::shared_ptr<Clock> clock;
    const std::shared_ptr<SecureRandom> random;
    const std::shared_ptr<AdjustLog> log;
    std::shared_ptr<Outbox> outbox;
    std::shared_ptr<DelegateReporter> reporter;
    std::shared_ptr<OutboxDelivery> delivery;
    std::mutex mutex;
    std::optional<PackageWriter> writer; // from launch on
    std::string pushToken;               // hex; empty: not set in this process
    bool sendsInBackground = false;
    bool isActive = true;
    bool isOnline = true;
};

OutboxAdjust::OutboxAdjust(const std::filesystem::path& file, AdjustOptions options, const Ports& ports)
    : parts_(std::make_unique<Parts>(file, std::move(options), ports)) {}

OutboxAdjust::~OutboxAdjust() = default;

std::shared_ptr<ADJConfig> OutboxAdjust::makeConfig(const std::string& appToken,
                                                    const std::string& environment) {
    auto fault = faultOfAppToken(appToken);
    if (!fault) fault = faultOfEnvironment(environment);
    if (!fault) return std::make_shared<ADJConfig>(appToken, environment);
    parts_->log->error("cannot be configured, because " + *fault + ".");
    return nullptr;
}

void OutboxAdjust::launch(std::shared_ptr<ADJConfig> config) {
    const ReportingLock lock(parts_->mutex);
    const auto& log = *parts_->log;
    if (!config) return log.error("has not been started: appDidLaunch was given no configuration.");
    if (!config->isValid()) return log.error("has not been started: the configuration is not valid.");
    if (parts_->writer) return log.error("has been started already: the first configuration stays.");
    parts_->start(*config);
}

void OutboxAdjust::send(const ADJEvent& event) {
    const ReportingLock lock(parts_->mutex);
    const auto& log = *parts_->log;
    if (!parts_->writer)
        return log.error("drops the event '" + event.eventToken() + "': it has not been started.");
    if (event.eventToken().empty()) return log.error("drops an event: it has no event token.");
    const bool withRevenue = parts_->hasValidRevenue(event);
    parts_->add(parts_->writer->event(event, withRevenue, parts_->clock->now()),
                event.transactionId().value_or(""));
}

void OutboxAdjust::send(const ADJSubscription& subscription) {
    const ReportingLock lock(parts_->mutex);
    if (!parts_->writer)
        return parts_->log->error("drops the subscription '" + subscription.transactionId() +
                                  "': it has not been started.");
    parts_->add(parts_->writer->subscription(subscription, parts_->clock->now()), "");
}

void OutboxAdjust::setPushToken(const std::vector<std::uint8_t>& token) {
    const ReportingLock lock(parts_->mutex);
    parts_->pushToken = lowerCaseHex(token);
    if (parts_->writer) parts_->usePushToken();
}

void OutboxAdjust::setActive(bool isActive) {
    const ReportingLock lock(parts_->mutex);
    parts_->isActive = isActive;
    if (!parts_->writer) return;
    if (isActive) return parts_->beActive();
    parts_->outbox->noteActivity(parts_->clock->now());
    parts_->update();
}

void OutboxAdjust::setOnline(bool isOnline) {
    const ReportingLock lock(parts_->mutex);
    parts_->isOnline = isOnline;
    parts_->update();
}

bool OutboxAdjust::isOnline() const {
    const ReportingLock lock(parts_->mutex);
    return parts_->isOnline;
}

std::vector<OutboxEntry> OutboxAdjust::packages() const { return parts_->outbox->entries(); }

OutboxInspection OutboxAdjust::inspect(const std::filesystem::path& file) { return inspectOutbox(file); }

} // namespace corvantile
