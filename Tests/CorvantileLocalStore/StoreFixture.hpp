#pragma once

#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "Tests/CorvantileLocalStore/Days.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <fstream>
#include <iterator>
#include <stdexcept>

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

inline Date dayAtTen(const std::string& day) { return onDay(day, std::chrono::hours(10)); }

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
