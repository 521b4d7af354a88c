#pragma once

#include "Corvantile/Corvantile.hpp"
#include "CorvantilePlatform/FatalError.hpp"

#include <memory>
#include <string>
#include <string_view>

// How a plug-in finds another one that it cannot do without. Ask at the moment of use; do not keep the
// answer.
namespace corvantile {

[[nodiscard]] inline std::string missingServiceMessage(std::string_view service) {
    return std::string("This service require ").append(service).append(".");
}

// The host's first plug-in that is a `Service`. Ends the process, naming the caller's file and line, when the
// host has none: it was wired wrongly.
template <class Service>
[[nodiscard]] std::shared_ptr<Service> requireService(const char* file = __builtin_FILE(),
                                                      int line = __builtin_LINE()) {
    if (auto service = Corvantile::queryAppDelegate<Service>()) return service;
    fatalError(missingServiceMessage(Service::typeName), file, line);
}

} // namespace corvantile
