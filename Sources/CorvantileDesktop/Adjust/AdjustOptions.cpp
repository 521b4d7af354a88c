#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"

#include <cstdlib>
#include <utility>

namespace corvantile {

namespace {

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

} // namespace corvantile
