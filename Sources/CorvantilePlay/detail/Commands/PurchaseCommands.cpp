#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPluggable.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Session/HostStore.hpp"
#include "CorvantilePlay/detail/Text/FileText.hpp"
#include "CorvantilePlay/detail/Text/StoreText.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <memory>

namespace corvantile::tool {

namespace {

void runReceipts(Host& host, Arguments given) {
    const auto records = std::dynamic_pointer_cast<IAPReceiptPlugin>(host.service<IAPReceiptPluggable>());
    auto json = readFileText(given[0].text, "a receipt as the store's JSON");
    host.reporter().report("host", "receipts", "hands in the receipt of " + given[0].text,
                           {{"file", given[0].text}, {"bytes", json.size()}});
    records->setReceipt(std::move(json));
}

void runValidated(Host& host, Arguments given) {
    const auto tracking = host.service<IAPReceiptTrackingPluggable>();
    const auto& text = given[0].text;
    const auto product = host.app().hasStore() ? productNamed(storeOf(host).catalogue(), text) : text;
    host.reporter().report("host", "validated", "the purchase of " + product + " is confirmed",
                           {{"product", product}});
    tracking->trackValidatedPurchase(product, parseParameters(given.subspan(1)));
}

} // namespace

std::vector<Command> purchaseCommands(Host& host) {
    return {
        {"receipts",
         "FILE",
         "hand a receipt, as the store's JSON, to the purchase records",
         [&host](Arguments given) { runReceipts(host, given); },
         {"At the next activation and purchase the store's own account takes its place again."},
         true,
         true},
        {"validated",
         "ID [KEY=VALUE…]",
         "confirm a purchase of the product, as the app's server would (trackValidatedPurchase)",
         [&host](Arguments given) { runValidated(host, given); },
         {"The event goes out once for the product's first purchase, with these parameters as they are."},
         true,
         true},
    };
}

} // namespace corvantile::tool
