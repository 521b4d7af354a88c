#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "CorvantileIAP/IAPReceiptPluggable.hpp"
#include "Reactive/ReplaySubject.hpp"
#include "Tests/Corvantile/EventLine.hpp"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What purchase analytics reads from and writes to, in plain sight.
namespace corvantile {

constexpr double oneDay = 86400;

// Bought on the day of this number, for as many days; 0: does not expire.
inline ReceiptInfo bought(std::int64_t transaction, std::int64_t original, double onDay,
                          double forDays = 30) {
    return {.transactionID = transaction,
            .purchaseDate = Date{onDay * oneDay},
            .expiresDate = forDays == 0 ? DecodingDefaults::invalidDate : Date{(onDay + forDays) * oneDay},
            .originalTransactionID = original};
}

inline ReceiptInfo asTrial(ReceiptInfo record) {
    record.isTrial = true;
    return record;
}

inline std::shared_ptr<SKProduct> pro(PriceLocale locale = {"EUR", "DE"}) {
    return std::make_shared<SKProduct>("pro", NSDecimalNumber(499, -2, false), std::move(locale));
}

class FakePurchases final : public IAPReceiptPluggable {
public:
    [[nodiscard]] rx::Observable<std::vector<ProductCategory>> productCategories() override {
        return categories.asObservable();
    }
    [[nodiscard]] rx::Observable<std::vector<RenewalInfo>> renewals() override {
        return renewalInfos.asObservable();
    }

    rx::ReplaySubject<std::vector<ProductCategory>> categories =
        rx::ReplaySubject<std::vector<ProductCategory>>::create(1);
    rx::ReplaySubject<std::vector<RenewalInfo>> renewalInfos =
        rx::ReplaySubject<std::vector<RenewalInfo>>::create(1);
};

class FakeFirstDate final : public FirstDatePluggable {
public:
    [[nodiscard]] rx::Observable<Date> firstDate() override { return dates.asObservable(); }

    rx::ReplaySubject<Date> dates = rx::ReplaySubject<Date>::create(1);
};

// Remembers what reaches it as lines: name and parameters, ` + 4.99 EUR` with revenue;
// `subscription 7: 4.99 EUR DE on day 3`. Threads: any.
class RecordingRouter final : public AnalyticPluggable {
public:
    void track(const AnalyticEvent& event) override { note(eventLine(event)); }
    void track(const AnalyticEvent& event, const NSDecimalNumber& revenue,
               const std::string& currency) override {
        note(eventLine(event) + " + " + revenue.description() + " " + currency);
    }
    void registerComponents(std::initializer_list<std::shared_ptr<AnalyticComponent>>) override {}
    void flush() override {}
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override {
        const auto dayNumber = static_cast<int>(date->secondsSinceReference / oneDay);
        note("subscription " + transId + ": " + price.description() + " " + currency + " " +
             region.value_or("-") + " on day " + std::to_string(dayNumber));
    }

    // Those since the last call.
    std::vector<std::string> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }

    std::function<void(const std::string& line)> onLine; // called first, outside the lock

private:
    void note(std::string line) {
        if (onLine) onLine(line);
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
    }

    std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace corvantile
