#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"

#include <string>
#include <utility>
#include <vector>

namespace ownapp {

namespace cv = corvantile;

/// Stands for an analytics back end: writes what reaches it into the output of the play.
class DiarySink final : public cv::AnalyticComponent {
public:
    DiarySink(std::string bullet, cv::PlayRegistry::SinkSettings settings, cv::PlayReporter& reporter)
        : bullet_(std::move(bullet)), settings_(std::move(settings)), reporter_(reporter) {}

    const std::vector<std::string>& ignoredEventNames() const override { return settings_.ignoredEventNames; }
    void ignore(std::initializer_list<std::string_view> names) override {
        for (const auto name : names) settings_.ignoredEventNames.emplace_back(name);
    }
    void track(const cv::AnalyticEvent& event) override { write(event.name); }
    void track(const cv::AnalyticEvent& event, const cv::NSDecimalNumber& with,
               const std::string& currency) override {
        write(event.name + ", " + with.description() + " " + currency);
    }
    using AnalyticComponent::trackIAPSubs;
    void trackIAPSubs(const cv::NSDecimalNumber& price, const std::string& currency,
                      const std::string& transId, const std::optional<cv::Date>&,
                      const std::optional<std::string>&) override {
        write("subscription " + transId + ", " + price.description() + " " + currency);
    }

private:
    void write(const std::string& text) {
        reporter_.report("diary", "wrote", settings_.name + ": " + bullet_ + " " + text);
    }

    const std::string bullet_;
    cv::PlayRegistry::SinkSettings settings_;
    cv::PlayReporter& reporter_;
};

} // namespace ownapp
