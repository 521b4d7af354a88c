#include "CorvantilePlay/detail/Kinds/RecordingSink.hpp"

#include "CorvantilePlay/PlayReporter.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <utility>

namespace corvantile::tool {

RecordingSink::RecordingSink(std::string name, PlayReporter& reporter)
    : name_(std::move(name)), reporter_(reporter) {}

RecordingSink::~RecordingSink() = default;

void RecordingSink::ignore(std::initializer_list<std::string_view> names) {
    ignoredEventNames_.insert(ignoredEventNames_.end(), names.begin(), names.end());
}

void RecordingSink::track(const AnalyticEvent& event) { report(describeEvent(event), fieldsOf(event)); }

void RecordingSink::track(const AnalyticEvent& event, const NSDecimalNumber& with,
                          const std::string& currency) {
    const Revenue revenue{with, currency};
    report(describeEvent(event, revenue), fieldsOf(event, revenue));
}

void RecordingSink::trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                                 const std::string& transId, const std::optional<Date>& date,
                                 const std::optional<std::string>& region) {
    EventValue::Map fields{{"price", price}, {"currency", currency}, {"transaction", transId}};
    if (date) fields.emplace("date", *date);
    if (region) fields.emplace("region", *region);
    const auto what = "a subscription " + describeParameters(fields);
    report(what, std::move(fields));
}

void RecordingSink::report(const std::string& what, EventValue::Map fields) const {
    fields.emplace("sink", name_);
    reporter_.report("sink", "got", name_ + " got " + what, std::move(fields));
}

} // namespace corvantile::tool
