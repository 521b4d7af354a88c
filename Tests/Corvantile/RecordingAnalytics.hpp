#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"

#include <mutex>

namespace corvantile {

using Lines = std::vector<std::string>;

// Remembers what reaches it as lines: name and parameters, without the network status that every event is
// given, ` + 4.99 EUR` with revenue; `subscription 7 4.99 EUR DE 2024-01-31`. Threads: any.
template <class Base>
class RecordingAnalytics : public Base {
public:
    void track(const AnalyticEvent& event) override { note(text(event)); }
    void track(const AnalyticEvent& event, const NSDecimalNumber& revenue,
               const std::string& currency) override {
        note(text(event) + " + " + revenue.description() + " " + currency);
    }
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override {
        note("subscription " + transId + " " + price.description() + " " + currency + " " +
             region.value_or("-") + " " + describe(date.value_or(Date{})).substr(0, 10));
    }

    void note(std::string line) {
        if (onLine) onLine(line);
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
    }
    [[nodiscard]] Lines lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    // Those since the last call.
    Lines take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }

    std::function<void(const std::string& line)> onLine; // called first, outside the lock

private:
    static std::string text(const AnalyticEvent& event) {
        auto line = event.name;
        for (const auto& [key, value] : event.params.value_or(EventParameters())) {
            const auto* const plain = value.template as<std::string>();
            if (key != AnalyticEvent::connectionStatusKey)
                line += " " + key + "=" + (plain != nullptr ? *plain : value.description());
        }
        return line;
    }

    mutable std::mutex mutex_;
    Lines lines_;
};

class RecordingSink final : public RecordingAnalytics<AnalyticComponent> {
public:
    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override { return ignored_; }
    void ignore(std::initializer_list<std::string_view> names) override {
        ignored_.insert(ignored_.end(), names.begin(), names.end());
    }

private:
    std::vector<std::string> ignored_;
};

class RecordingRouter final : public RecordingAnalytics<AnalyticPluggable> {
public:
    void registerComponents(std::initializer_list<std::shared_ptr<AnalyticComponent>>) override {}
    void flush() override {}
};

} // namespace corvantile
