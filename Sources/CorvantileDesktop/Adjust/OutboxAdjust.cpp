#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"

#include "CorvantileDesktop/Adjust/detail/AdjustChecks.hpp"
#include "CorvantileDesktop/Adjust/detail/AdjustLog.hpp"
#include "CorvantileDesktop/Adjust/detail/DelegateReporter.hpp"
#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxMemory.hpp"
#include "CorvantileDesktop/Adjust/detail/PackageCourier.hpp"
#include "CorvantileDesktop/Adjust/detail/PackageSender.hpp"
#include "CorvantileDesktop/Adjust/detail/PackageWriter.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <mutex>
#include <optional>
#include <utility>

namespace corvantile {

struct OutboxAdjust::Parts {
    Parts(std::filesystem::path file, AdjustOptions given, const Ports& ports)
        : options(withEnvironment(std::move(given))),
          device(ports.device),
          advertising(ports.advertising),
          clock(ports.clock),
          random(ports.random),
          log(std::make_shared<AdjustLog>(ports.console)),
          isOnline(!options.isOffline) {
        const auto queue = ports.queues->makeSerial("corvantile.adjust", QualityOfService::background);
        outbox =
            std::make_shared<Outbox>(std::move(file), ports.console,
                                     [queue](std::function<void()> work) { queue->async(std::move(work)); });
        reporter = std::make_shared<DelegateReporter>(outbox, ports.queues->main());
        courier = std::make_shared<PackageCourier>(
            CourierOptions{.endpoint = options.endpoint,
                           .bearerToken = options.bearerToken,
                           .outbox = outbox,
                           .http = ports.http,
                           .random = random,
                           .log = log,
                           .queue = queue,
                           .report = [told = reporter](const auto& package, const auto& answer) {
                               told->report(package, answer);
                           }});
    }

    // What follows with the mutex held.

    void start(const ADJConfig& config) {
        log->setLevel(config.logLevel());
        sendsInBackground = config.sendInBackground();
        reporter->setDelegate(config.delegate());
        writer.emplace(senderOf(config, *device, advertising.get()), random);
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
        courier->allow(writer && isOnline && (isActive || sendsInBackground) && !options.endpoint.empty());
        courier->wake();
    }

    [[nodiscard]] bool isFitRevenue(const ADJEvent& event) const {
        if (!event.revenue()) return false;
        const auto fault = faultOfRevenue(*event.revenue());
        if (fault)
            log->fault("sends the event '" + event.eventToken() + "' without its revenue, because " + *fault +
                       ".");
        return !fault;
    }

    void add(OutboxPackage package, const std::string& transactionId) {
        const auto name = log->isVerbose() ? describe(package) : "";
        if (transactionId.empty())
            outbox->add(std::move(package));
        else if (!outbox->addUnlessRepeated(package, transactionId))
            return log->fault("skips an event: its transaction '" + transactionId +
                              "' has been sent before.");
        if (log->isVerbose()) log->detail("has queued " + name + ".");
        courier->wake();
    }

    const AdjustOptions options;
    const std::shared_ptr<UIDevice> device;
    const std::shared_ptr<ASIdentifierManager> advertising;
    const std::shared_ptr<Clock> clock;
    const std::shared_ptr<SecureRandom> random;
    const std::shared_ptr<AdjustLog> log;
    std::shared_ptr<Outbox> outbox;
    std::shared_ptr<DelegateReporter> reporter;
    std::shared_ptr<PackageCourier> courier;
    std::mutex mutex;
    std::optional<PackageWriter> writer; // from launch on
    std::string pushToken;               // hex; empty: not set in this process
    bool sendsInBackground = false;
    bool isActive = true;
    bool isOnline = true;
};

OutboxAdjust::OutboxAdjust(std::filesystem::path file, AdjustOptions options, const Ports& ports)
    : parts_(std::make_unique<Parts>(std::move(file), std::move(options), ports)) {}

OutboxAdjust::~OutboxAdjust() = default;

std::shared_ptr<ADJConfig> OutboxAdjust::makeConfig(const std::string& appToken,
                                                    const std::string& environment) {
    auto fault = faultOfAppToken(appToken);
    if (!fault) fault = faultOfEnvironment(environment);
    if (!fault) return std::make_shared<ADJConfig>(appToken, environment);
    parts_->log->fault("cannot be configured, because " + *fault + ".");
    return std::make_shared<ADJConfig>(std::nullopt, "");
}

void OutboxAdjust::launch(std::shared_ptr<ADJConfig> config) {
    const std::lock_guard lock(parts_->mutex);
    const auto& log = *parts_->log;
    if (!config) return log.fault("has not been started: appDidLaunch was given no configuration.");
    if (!config->isValid()) return log.fault("has not been started: the configuration is not valid.");
    if (parts_->writer) return log.fault("has been started already: the first configuration stays.");
    parts_->start(*config);
}

void OutboxAdjust::send(const ADJEvent& event) {
    const std::lock_guard lock(parts_->mutex);
    const auto& log = *parts_->log;
    if (!parts_->writer)
        return log.fault("drops the event '" + event.eventToken() + "': it has not been started.");
    if (event.eventToken().empty()) return log.fault("drops an event: it has no event token.");
    const bool withRevenue = parts_->isFitRevenue(event);
    parts_->add(parts_->writer->event(event, withRevenue, parts_->clock->now()),
                event.transactionId().value_or(""));
}

void OutboxAdjust::send(const ADJSubscription& subscription) {
    const std::lock_guard lock(parts_->mutex);
    if (!parts_->writer)
        return parts_->log->fault("drops the subscription '" + subscription.transactionId() +
                                  "': it has not been started.");
    parts_->add(parts_->writer->subscription(subscription, parts_->clock->now()), "");
}

void OutboxAdjust::setPushToken(const std::vector<std::uint8_t>& token) {
    const std::lock_guard lock(parts_->mutex);
    parts_->pushToken = lowerCaseHex(token);
    if (parts_->writer) parts_->usePushToken();
}

void OutboxAdjust::setActive(bool isActive) {
    const std::lock_guard lock(parts_->mutex);
    parts_->isActive = isActive;
    if (!parts_->writer) return;
    if (isActive) return parts_->beActive();
    parts_->outbox->noteActivity(parts_->clock->now());
    parts_->update();
}

void OutboxAdjust::setOnline(bool isOnline) {
    const std::lock_guard lock(parts_->mutex);
    parts_->isOnline = isOnline;
    parts_->update();
}

bool OutboxAdjust::isOnline() const {
    const std::lock_guard lock(parts_->mutex);
    return parts_->isOnline;
}

std::vector<OutboxEntry> OutboxAdjust::packages() const { return parts_->outbox->entries(); }

OutboxInspection OutboxAdjust::inspect(const std::filesystem::path& file) { return inspectOutbox(file); }

} // namespace corvantile
