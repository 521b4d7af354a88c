#include "CorvantileDesktop/Adjust/detail/OutboxMemory.hpp"

#include "CorvantileDesktop/Adjust/detail/TransactionMemory.hpp"

#include <charconv>

namespace corvantile::outboxmemory {

std::int64_t number(const std::optional<std::string>& text) {
    std::int64_t number = 0;
    if (text) std::from_chars(text->data(), text->data() + text->size(), number);
    return number;
}

std::string merged(std::string_view name, const std::optional<std::string>& filed, const std::string& held) {
    if (name == transactions) return withTransactions(filed.value_or(""), held);
    if (name == sessions && number(filed) > number(held)) return *filed;
    return held;
}

} // namespace corvantile::outboxmemory
