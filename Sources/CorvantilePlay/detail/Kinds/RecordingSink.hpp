#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {
class PlayReporter;
} // namespace corvantile

namespace corvantile::tool {

// Stands for an analytics back end: reports what reaches it.
class RecordingSink final : public AnalyticComponent {
public:
    RecordingSink(std::string name, PlayReporter& reporter);
    ~RecordingSink() override;

    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override {
        return ignoredEventNames_;
    }
    void ignore(std::initializer_list<std::string_view> names) override;

    void track(const AnalyticEvent& event) override;
    void track(const AnalyticEvent& event, const NSDecimalNumber& with, const std::string& currency) override;
    using AnalyticComponent::trackIAPSubs;
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override;

private:
    void report(const std::string& what, EventValue::Map fields) const;

    const std::string name_;
    PlayReporter& reporter_;
    std::vector<std::string> ignoredEventNames_;
};

} // namespace corvantile::tool
