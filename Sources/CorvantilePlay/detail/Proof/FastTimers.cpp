#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlay/detail/Proof/SteppedPorts.hpp"

#include <utility>

namespace corvantile::tool {

namespace {

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

void speedUpTimers(Ports& ports, int times) {
    ports.queues = std::make_shared<FastQueues>(std::move(ports.queues), times);
}

} // namespace corvantile::tool
