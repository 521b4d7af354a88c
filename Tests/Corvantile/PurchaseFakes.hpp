#pragma once

#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "CorvantileIAP/IAPReceiptPluggable.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"
#include "Tests/Corvantile/RecordingAnalytics.hpp"

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

} // namespace corvantile
