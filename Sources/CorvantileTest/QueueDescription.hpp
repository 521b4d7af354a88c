#pragma once

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <string>

namespace corvantile {

// What a serial queue was made with.
struct QueueDescription {
    std::string label;
    QualityOfService qualityOfService = QualityOfService::standard;

    friend bool operator==(const QueueDescription&, const QueueDescription&) = default;
};

} // namespace corvantile
