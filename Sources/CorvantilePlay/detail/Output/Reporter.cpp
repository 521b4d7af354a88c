#include "CorvantilePlay/detail/Output/Reporter.hpp"

#include <utility>

namespace corvantile::tool {

Reporter::Reporter(Listener listener) : listener_(std::move(listener)) {}

void Reporter::tell(std::string who, std::string kind, std::string text, EventValue::Map fields) {
    Happening happening{
        .who = std::move(who), .kind = std::move(kind), .text = std::move(text), .fields = std::move(fields)};
    const std::lock_guard lock(mutex_);
    ++count_;
    happening.time = std::chrono::steady_clock::now() - begin_;
    listener_(happening);
}

} // namespace corvantile::tool
