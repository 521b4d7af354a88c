#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "CorvantilePlay/detail/Proof/WriteSteps.hpp"

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// Lets a sink pass `steps` with each thing that it gets.
class SteppedSink final : public AnalyticComponent {
public:
    // `delivered` is called with a line of the scenario after each delivery. May be null.
    SteppedSink(std::string name, std::shared_ptr<AnalyticComponent> inner, std::shared_ptr<WriteSteps> steps,
                std::function<void(const std::string& line)> delivered);
    ~SteppedSink() override;

    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override;
    void ignore(std::initializer_list<std::string_view> names) override;
    void track(const AnalyticEvent& event) override;
    void track(const AnalyticEvent& event, const NSDecimalNumber& with, const std::string& currency) override;
    using AnalyticComponent::trackIAPSubs;
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override;

private:
    template <class Deliver>
    void pass(const std::string& line, Deliver deliver);

    const std::string name_;
    const std::shared_ptr<AnalyticComponent> inner_;
    const std::shared_ptr<WriteSteps> steps_;
    const std::function<void(const std::string&)> delivered_;
};

// Stands for a back end: writes a line of the scenario for each thing that it gets at the end of a file. A
// file that cannot be written ends the process.
[[nodiscard]] std::shared_ptr<AnalyticComponent> makeFileSink(std::filesystem::path file);

// One whole line at the end of a file, there when the call has returned.
void appendLine(const std::filesystem::path& file, const std::string& line);

} // namespace corvantile::tool
