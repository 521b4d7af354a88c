#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Session/HostStore.hpp"
#include "CorvantilePlay/detail/Text/CatalogueText.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/StoreText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::tool {

namespace {

// Records as lines of one table, each with its fields.
class Listing {
public:
    void add(Cells cells, EventValue::Map fields) {
        rows_.push_back(std::move(cells));
        fields_.push_back(std::move(fields));
    }

    void report(Host& host, const std::string& kind, const std::string& none) const {
        const auto lines = alignedLines(rows_);
        for (std::size_t row = 0; row < lines.size(); ++row)
            host.reporter().report("store", kind, lines[row], fields_[row]);
        if (lines.empty()) host.reporter().report("store", kind, none);
    }

private:
    std::vector<Cells> rows_;
    std::vector<EventValue::Map> fields_;
};

void runCatalogue(Host& host) {
    const auto& catalogue = storeOf(host).catalogue();
    Listing listing;
    for (const auto& product : catalogue.products())
        listing.add(cellsOf(catalogue, product), fieldsOf(catalogue, product));
    listing.report(host, "product", "the store sells nothing");
}

void runTransactions(Host& host) {
    auto& store = storeOf(host);
    Listing listing;
    for (const auto& purchase : askStore([&] { return store.purchases(); }))
        listing.add(cellsOf(purchase), fieldsOf(purchase));
    for (const auto& transaction : askStore([&] { return store.transactions(); }))
        if (transaction.state != SKPaymentTransactionState::purchased)
            listing.add(cellsOf(transaction), fieldsOf(transaction));
    listing.report(host, "transaction", "nothing was bought yet");
}

void report(Host& host, const std::string& key, const std::string& text) {
    host.reporter().report("store", "status", key + ": " + text, {{"name", key}, {"value", text}});
}

void reportDecisions(Host& host, const StoreSettings& settings) {
    for (const auto& [product, next] : settings.nextPayments)
        report(host, "next payment",
               product + (next.failure ? " fails: " + next.failure->message : " is not decided at once"));
    for (const auto& product : settings.failingBilling) report(host, "billing", product + " is not paid");
    for (const auto& product : settings.promotions) report(host, "promotion", product + " waits for the app");
}

void runStore(Host& host, Arguments given) {
    auto& store = storeOf(host);
    if (!given.empty()) {
        const auto& state = given[0].text;
        if (state != "online" && state != "offline")
            throw UsageError(unknownName("state of the store", state, {"online", "offline"}));
        askStore([&] { store.setOffline(state == "offline"); });
        return report(host, "connection", state);
    }
    const auto settings = askStore([&] { return store.settings(); });
    report(host, "clock", describe(askStore([&] { return store.now(); })));
    report(host, "connection", settings.isOffline ? "offline" : "online");
    report(host, "catalogue", std::to_string(store.catalogue().products().size()) + " products");
    for (const auto& subscription : askStore([&] { return store.subscriptions(); }))
        report(host, "subscription", describe(subscription));
    reportDecisions(host, settings);
}

} // namespace

std::vector<Command> storeViewCommands(Host& host) {
    std::vector<Command> commands = {
        {"catalogue", "", "show what the store sells", [&host](Arguments) { runCatalogue(host); }},
        {"transactions", "", "show what was bought, and what is under way",
         [&host](Arguments) { runTransactions(host); }},
        {"store", "[online|offline]", "show how the store stands, or let nobody reach it for a while",
         [&host](Arguments given) { runStore(host, given); }},
    };
    for (auto& command : commands) command.reachesFar = true;
    return commands;
}

} // namespace corvantile::tool
