#include "CorvantileDesktop/Adjust/detail/TransactionMemory.hpp"

#include "CorvantileDesktop/Adjust/detail/FormText.hpp"

#include <algorithm>
#include <utility>
#include <vector>

namespace corvantile {

// A form whose fields are named by place, with one digit each: decoded, they come in this order.
static_assert(keptTransactions <= 10);

std::optional<std::string> withTransaction(const std::optional<std::string>& remembered,
                                           const std::string& identifier) {
    std::vector<std::string> identifiers;
    for (const auto& field : formFields(remembered.value_or(""))) identifiers.push_back(field.second);
    if (std::find(identifiers.begin(), identifiers.end(), identifier) != identifiers.end())
        return std::nullopt;
    if (identifiers.size() == keptTransactions) identifiers.erase(identifiers.begin());
    identifiers.push_back(identifier);
    std::string text;
    for (std::size_t place = 0; place < identifiers.size(); ++place)
        appendFormField(text, std::to_string(place), identifiers[place]);
    return text;
}

std::string withTransactions(std::string remembered, const std::string& later) {
    for (const auto& field : formFields(later))
        if (auto more = withTransaction(remembered, field.second)) remembered = std::move(*more);
    return remembered;
}

} // namespace corvantile
