#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// Prints each event on the console, as framed JSON, in every build. In a dry run the router feeds it alone:
// this very class, so a class derived from it is an ordinary sink.
class CORVANTILE_API ConsoleComponent : public AnalyticComponent {
public:
    ConsoleComponent();
    ~ConsoleComponent() override;

    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override {
        return ignoredEventNames_;
    }
    void ignore(std::initializer_list<std::string_view> names) override;

    // An event with a parameter that JSON cannot hold (a date, an opaque object, a number that is not finite,
    // text that is not UTF-8) is not printed.
    void track(const AnalyticEvent& event) override;
    // The same: revenue is not printed.
    void track(const AnalyticEvent& event, const NSDecimalNumber& with, const std::string& currency) override;
    // Prints nothing.
    using AnalyticComponent::trackIAPSubs;
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override;

private:
    std::vector<std::string> ignoredEventNames_;
};

} // namespace corvantile
