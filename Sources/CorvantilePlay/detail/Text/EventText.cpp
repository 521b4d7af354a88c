#include "CorvantilePlay/detail/Text/EventText.hpp"

#include "CorvantilePlay/detail/Text/Values.hpp"

namespace corvantile::tool {

std::string describeEvent(const AnalyticEvent& event, const std::optional<Revenue>& revenue) {
    auto text = event.name;
    if (revenue) text += " " + revenue->amount.description() + " " + revenue->currency;
    if (event.params && !event.params->empty()) text += " " + describeParameters(*event.params);
    return text;
}

EventValue::Map fieldsOf(const AnalyticEvent& event, const std::optional<Revenue>& revenue) {
    EventValue::Map fields{{"event", event.name}};
    if (event.params) fields.emplace("params", *event.params);
    if (revenue) fields.emplace("revenue", revenue->amount);
    if (revenue) fields.emplace("currency", revenue->currency);
    return fields;
}

} // namespace corvantile::tool
