#pragma once

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <memory>
#include <string>

namespace corvantile {

class Executors;

// Queues on the loops of `executors`; constructed on the main thread. Every serial queue takes turns on the
// workers, whatever its quality of service, which is only kept for whoever asks.
class DesktopQueues final : public DispatchQueues {
public:
    explicit DesktopQueues(std::shared_ptr<Executors> executors);

    [[nodiscard]] std::shared_ptr<DispatchQueue> main() override { return main_; }
    [[nodiscard]] std::shared_ptr<DispatchQueue> makeSerial(std::string label,
                                                            QualityOfService qualityOfService) override;

private:
    const std::shared_ptr<Executors> executors_;
    const std::shared_ptr<DispatchQueue> main_;
};

} // namespace corvantile
