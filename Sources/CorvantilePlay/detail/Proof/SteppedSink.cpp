#include "CorvantilePlay/detail/Proof/SteppedSink.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlay/detail/Proof/PurchaseScenario.hpp"

#include <fstream>
#include <utility>

namespace corvantile::tool {

namespace {

class FileSink final : public AnalyticComponent {
public:
    explicit FileSink(std::filesystem::path file) : file_(std::move(file)) {}

    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override { return ignored_; }
    void ignore(std::initializer_list<std::string_view> names) override {
        ignored_.insert(ignored_.end(), names.begin(), names.end());
    }
    void track(const AnalyticEvent& event) override { appendLine(file_, eventLine(event.name)); }
    void track(const AnalyticEvent& event, const NSDecimalNumber&, const std::string&) override {
        track(event);
    }
    void trackIAPSubs(const NSDecimalNumber&, const std::string&, const std::string& transId,
                      const std::optional<Date>&, const std::optional<std::string>&) override {
        appendLine(file_, subscriptionLine(transId));
    }

private:
    const std::filesystem::path file_;
    std::vector<std::string> ignored_;
};

} // namespace

void appendLine(const std::filesystem::path& file, const std::string& line) {
    std::ofstream stream(file, std::ios::app);
    stream << line + "\n" << std::flush;
    if (!stream) fatalError("The proof cannot write " + file.string());
}

std::shared_ptr<AnalyticComponent> makeFileSink(std::filesystem::path file) {
    return std::make_shared<FileSink>(std::move(file));
}

SteppedSink::SteppedSink(std::string name, std::shared_ptr<AnalyticComponent> inner,
                         std::shared_ptr<WriteSteps> steps, std::function<void(const std::string&)> delivered)
    : name_(std::move(name)),
      inner_(std::move(inner)),
      steps_(std::move(steps)),
      delivered_(std::move(delivered)) {}

SteppedSink::~SteppedSink() = default;

const std::vector<std::string>& SteppedSink::ignoredEventNames() const { return inner_->ignoredEventNames(); }
void SteppedSink::ignore(std::initializer_list<std::string_view> names) { inner_->ignore(names); }

template <class Deliver>
void SteppedSink::pass(const std::string& line, Deliver deliver) {
    steps_->take(name_ + " sink gets " + line, deliver);
    if (delivered_) delivered_(line);
}

void SteppedSink::track(const AnalyticEvent& event) {
    pass(eventLine(event.name), [&] { inner_->track(event); });
}

void SteppedSink::track(const AnalyticEvent& event, const NSDecimalNumber& with,
                        const std::string& currency) {
    pass(eventLine(event.name), [&] { inner_->track(event, with, currency); });
}

void SteppedSink::trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                               const std::string& transId, const std::optional<Date>& date,
                               const std::optional<std::string>& region) {
    pass(subscriptionLine(transId), [&] { inner_->trackIAPSubs(price, currency, transId, date, region); });
}

} // namespace corvantile::tool
