#include "Corvantile/Plugin/Analytic/AdjustEvent.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"

namespace corvantile {

AdjustEvent AdjustEvent::decode(const KeyedDecodingContainer& container) {
    return {container.decodeString("token"), container.decodeString("name")};
}

std::string encodeJSON(const AdjustEvent& event) {
    return recordjson::write({{"token", event.token}, {"name", event.name}});
}

} // namespace corvantile
