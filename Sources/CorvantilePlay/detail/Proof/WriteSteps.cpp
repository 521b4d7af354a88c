#include "CorvantilePlay/detail/Proof/WriteSteps.hpp"

#include "CorvantilePlatform/Adjust/Adjust.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"

#include <csignal>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace corvantile::tool {

namespace {

using Steps = std::shared_ptr<WriteSteps>;

class SteppedKeychain final : public Locksmith {
public:
    SteppedKeychain(std::shared_ptr<Locksmith> inner, Steps steps)
        : inner_(std::move(inner)), steps_(std::move(steps)) {}

    [[nodiscard]] std::optional<KeychainDictionary> load(std::string_view account,
                                                         std::string_view service) const override {
        return inner_->load(account, service);
    }
    void save(const KeychainDictionary& dictionary, std::string_view account,
              std::string_view service) override {
        steps_->take("keychain adds " + std::string(account),
                     [&] { inner_->save(dictionary, account, service); });
    }
    void update(const KeychainDictionary& dictionary, std::string_view account,
                std::string_view service) override {
        steps_->take("keychain replaces " + std::string(account),
                     [&] { inner_->update(dictionary, account, service); });
    }
    bool remove(std::string_view account, std::string_view service) override {
        return steps_->take("keychain removes " + std::string(account),
                            [&] { return inner_->remove(account, service); });
    }

private:
    const std::shared_ptr<Locksmith> inner_;
    const Steps steps_;
};

// Without the user identifier that ends a record's key: it is another one in each state folder.
std::string nameOf(std::string_view key) {
    constexpr std::size_t identifierLength = 36;
    const auto end = key.rfind('_');
    const bool hasIdentifier = end != std::string_view::npos && key.size() - end - 1 == identifierLength;
    return std::string(hasIdentifier ? key.substr(0, end) : key);
}

class SteppedDefaults final : public NSUserDefaults {
public:
    SteppedDefaults(std::shared_ptr<NSUserDefaults> inner, Steps steps)
        : inner_(std::move(inner)), steps_(std::move(steps)) {}

    [[nodiscard]] std::optional<Value> valueForKey(std::string_view key) const override {
        return inner_->valueForKey(key);
    }
    void setValue(std::optional<Value> value, std::string_view forKey) override {
        steps_->take("user defaults set " + nameOf(forKey),
                     [&] { inner_->setValue(std::move(value), forKey); });
    }
    [[nodiscard]] Dictionary dictionaryRepresentation() const override {
        return inner_->dictionaryRepresentation();
    }
    bool synchronize() override {
        return steps_->take("user defaults synchronize", [&] { return inner_->synchronize(); });
    }

private:
    const std::shared_ptr<NSUserDefaults> inner_;
    const Steps steps_;
};

class SteppedAdjust final : public Adjust {
public:
    SteppedAdjust(std::shared_ptr<Adjust> inner, Steps steps)
        : inner_(std::move(inner)), steps_(std::move(steps)) {}

    [[nodiscard]] std::shared_ptr<ADJConfig> makeConfig(const std::string& appToken,
                                                        const std::string& environment) override {
        return inner_->makeConfig(appToken, environment);
    }
    [[nodiscard]] std::shared_ptr<ADJSubscription> makeSubscription(const NSDecimalNumber& price,
                                                                    const std::string& currency,
                                                                    const std::string& transactionId,
                                                                    std::string receipt) override {
        return inner_->makeSubscription(price, currency, transactionId, std::move(receipt));
    }
    void launch(std::shared_ptr<ADJConfig> config) override {
        steps_->take("outbox begins a session", [&] { inner_->launch(std::move(config)); });
    }
    void send(const ADJEvent& event) override {
        steps_->take("outbox takes event " + event.eventToken(), [&] { inner_->send(event); });
    }
    void send(const ADJSubscription& subscription) override {
        steps_->take("outbox takes subscription " + subscription.transactionId(),
                     [&] { inner_->send(subscription); });
    }
    void setPushToken(const std::vector<std::uint8_t>& token) override {
        steps_->take("outbox keeps the push token", [&] { inner_->setPushToken(token); });
    }

private:
    const std::shared_ptr<Adjust> inner_;
    const Steps steps_;
};

class FastQueue final : public DispatchQueue {
public:
    FastQueue(std::shared_ptr<DispatchQueue> inner, int times) : inner_(std::move(inner)), times_(times) {}

    void async(WorkItem item) override { inner_->async(std::move(item)); }
    void asyncAfter(std::chrono::nanoseconds delay, WorkItem item) override {
        inner_->asyncAfter(delay / times_, std::move(item));
    }
    [[nodiscard]] bool isCurrent() const override { return inner_->isCurrent(); }
    [[nodiscard]] const std::string& label() const override { return inner_->label(); }
    [[nodiscard]] QualityOfService qualityOfService() const override { return inner_->qualityOfService(); }

private:
    const std::shared_ptr<DispatchQueue> inner_;
    const int times_;
};

class FastQueues final : public DispatchQueues {
public:
    FastQueues(std::shared_ptr<DispatchQueues> inner, int times)
        : inner_(std::move(inner)),
          times_(times),
          main_(std::make_shared<FastQueue>(inner_->main(), times)) {}

    [[nodiscard]] std::shared_ptr<DispatchQueue> main() override { return main_; }
    [[nodiscard]] std::shared_ptr<DispatchQueue> makeSerial(std::string label,
                                                            QualityOfService qualityOfService) override {
        return std::make_shared<FastQueue>(inner_->makeSerial(std::move(label), qualityOfService), times_);
    }

private:
    const std::shared_ptr<DispatchQueues> inner_;
    const int times_;
    const std::shared_ptr<DispatchQueue> main_;
};

} // namespace

// By name and not by place: threads take turns as they like.
std::string WriteSteps::numbered(const std::string& what) {
    const std::lock_guard lock(mutex_);
    const int number = ++counts_[what];
    return number == 1 ? what : what + " (" + std::to_string(number) + ")";
}

void WriteSteps::pass(const std::string& moment) const {
    if (moment == fatal_) static_cast<void>(::raise(SIGKILL));
    if (tell_) tell_(moment);
}

void stepThrough(Ports& ports, const Steps& steps) {
    ports.keychain = std::make_shared<SteppedKeychain>(std::move(ports.keychain), steps);
    ports.userDefaults = std::make_shared<SteppedDefaults>(std::move(ports.userDefaults), steps);
    ports.adjust = std::make_shared<SteppedAdjust>(std::move(ports.adjust), steps);
}

void speedUpTimers(Ports& ports, int times) {
    ports.queues = std::make_shared<FastQueues>(std::move(ports.queues), times);
}

} // namespace corvantile::tool
