#include "CorvantilePlay/detail/Output/Reporter.hpp"

#include <utility>

namespace corvantile::tool {

Reporter::Reporter(Listener listener) : listener_(std::move(listener)) {}

Reporter::~Reporter() = default;

void Reporter::report(std::string who, std::string kind, std::string text, EventValue::Map fields) {
    PlayEvent event{
        .who = std::move(who), .kind = std::move(kind), .text = std::move(text), .fields = std::move(fields)};
    const std::lock_guard lock(mutex_);
    ++count_;
    event.time = std::chrono::steady_clock::now() - begin_;
    listener_(event);
}

} // namespace corvantile::tool
