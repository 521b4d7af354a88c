#pragma once

#include "LocalStore/Catalogue/CatalogueReader.hpp"
#include "LocalStore/Engine/StoreStorage.hpp"
#include "LocalStore/LocalStore.hpp"
#include "Platform/Foundation/CalendarText.hpp"
#include "Platform/Foundation/Clock.hpp"

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace corvantile {

// Products of the sample catalogue.
inline constexpr const char* coins = "com.example.sampleapp.coins100";
inline constexpr const char* themes = "com.example.sampleapp.themes";
inline constexpr const char* monthly = "com.example.sampleapp.pro.monthly";

inline std::string fileText(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw std::runtime_error("No file " + path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline Catalogue catalogueOfVersion(const std::string& version) {
    const auto name = "version-" + version + ".storekit";
    return readCatalogue(fileText(CORVANTILE_CATALOGUES "/" + name), name);
}

inline Catalogue sampleCatalogue() { return readCatalogue(fileText(CORVANTILE_SAMPLE_CATALOGUE), "sample"); }

// `2024-01-31`, at ten o'clock.
inline Date dayAtTen(const std::string& text) {
    using namespace std::chrono;
    const year_month_day day{year{std::stoi(text.substr(0, 4))},
                             month{static_cast<unsigned>(std::stoi(text.substr(5, 2)))},
                             std::chrono::day{static_cast<unsigned>(std::stoi(text.substr(8, 2)))}};
    return Date::fromUnixSeconds(static_cast<double>(sys_days(day).time_since_epoch().count()) * 86400 +
                                 36000);
}

inline std::string dayOf(Date date) { return timestamp(date, std::chrono::seconds(0)).substr(0, 10); }

class ManualClock final : public Clock {
public:
    [[nodiscard]] Date now() const override { return date; }
    [[nodiscard]] std::chrono::seconds localOffset(Date) const override { return {}; }
    Date date = dayAtTen("2024-01-31");
};

// A store of one's own, whose process may be launched anew.
class StoreFixture {
public:
    explicit StoreFixture(Catalogue sold) : catalogue(std::move(sold)) { launch(); }

    void launch() {
        store = std::make_unique<LocalStore>(LocalStoreOptions{
            .catalogue = catalogue, .bundleIdentifier = "app", .clock = clock, .storage = storage});
    }

    // The transaction as it stands once the store has decided; none when it is finished already.
    StoreTransaction pay(const std::string& product, int quantity = 1) {
        const auto number = store->addPayment(product, quantity);
        store->settle(number);
        return find(number);
    }
    StoreTransaction find(std::int64_t number) {
        for (auto& transaction : store->transactions())
            if (transaction.number == number) return transaction;
        return {};
    }
    void goTo(const std::string& day) { store->advance(dayAtTen(day) - store->now()); }

    const Catalogue catalogue;
    const std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    const std::shared_ptr<InMemoryStoreStorage> storage = std::make_shared<InMemoryStoreStorage>();
    std::unique_ptr<LocalStore> store;
};

} // namespace corvantile
