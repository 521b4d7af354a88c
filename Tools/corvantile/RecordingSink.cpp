#include "Tools/corvantile/RecordingSink.hpp"

#include "Tools/corvantile/EventText.hpp"
#include "Tools/corvantile/Reporter.hpp"
#include "Tools/corvantile/Values.hpp"

#include <utility>

namespace corvantile::tool {

RecordingSink::RecordingSink(std::string name, Reporter& reporter)
    : name_(std::move(name)), reporter_(reporter) {}

RecordingSink::~RecordingSink() = default;

void RecordingSink::ignore(std::initializer_list<std::string_view> names) {
    ignoredEventNames_.insert(ignoredEventNames_.end(), names.begin(), names.end());
}

bool RecordingSink::shouldTrack(const AnalyticEvent& event) const {
    const bool accepts = AnalyticComponent::shouldTrack(event);
    if (!accepts) tell("ignored", "ignores " + event.name + ": it is on its list", fieldsOf(event));
    return accepts;
}

void RecordingSink::track(const AnalyticEvent& event) {
    tell("got", "got " + describeEvent(event), fieldsOf(event));
}

void RecordingSink::track(const AnalyticEvent& event, const NSDecimalNumber& with,
                          const std::string& currency) {
    tell("got", "got " + describeEvent(event, Revenue{with, currency}),
         fieldsOf(event, Revenue{with, currency}));
}

void RecordingSink::trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                                 const std::string& transId, const std::optional<Date>& date,
                                 const std::optional<std::string>& region) {
    EventValue::Map fields{{"price", price}, {"currency", currency}, {"transaction", transId}};
    if (date) fields.emplace("date", *date);
    if (region) fields.emplace("region", *region);
    const auto what = "got a subscription " + describeParameters(fields);
    tell("got", what, std::move(fields));
}

void RecordingSink::tell(std::string kind, const std::string& what, EventValue::Map fields) const {
    fields.emplace("sink", name_);
    reporter_.tell("sink", std::move(kind), name_ + " " + what, std::move(fields));
}

} // namespace corvantile::tool
