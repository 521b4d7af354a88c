#include "Corvantile/Corvantile.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Session/HostStore.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/StoreText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "HostCore/detail/JSON.hpp"

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::tool {

namespace {

// A command about one product: `act` gets the store and the product, and answers what to tell.
template <class Act>
Command about(Host& host, std::string name, std::string arguments, std::string help, Act act) {
    const auto run = [&host, name, act](Arguments given) {
        auto& store = storeOf(host);
        const auto product = productNamed(store.catalogue(), given[0].text);
        const std::string text = askStore([&] { return act(store, product, given.subspan(1)); });
        host.reporter().report("store", name, text, {{"product", product}});
    };
    return {std::move(name), std::move(arguments), std::move(help), run};
}

int parseQuantity(const std::string& text) {
    const auto quantity = textInteger(text).value_or(0);
    if (quantity > 0 && quantity <= std::numeric_limits<int>::max()) return static_cast<int>(quantity);
    throw unexpectedValue("how many, such as 3", text);
}

// Nobody should look for events that are held back by design.
void explainSilence(Host& host) {
    if (!Corvantile::debug() || Corvantile::dryRun() || !host.app().hasPlugIn("IAPReceiptTrackingPlugin"))
        return;
    host.reporter().report("host", "silent",
                           "purchase analytics begins no pass in debug mode, except in a dry run");
}

Command buyCommand(Host& host) {
    const auto buy = [&host](LocalStore&, const std::string& product, Arguments given) {
        const int quantity = given.empty() ? 1 : parseQuantity(given[0].text);
        SKPaymentQueue::defaultQueue()->addPayment(std::make_shared<SKPayment>(product, quantity));
        explainSilence(host);
        return "a payment for " + product + " begins";
    };
    auto command =
        about(host, "buy", "ID [QUANTITY]", "buy a product in the app, through the payment queue", buy);
    command.details = {"ID is a product's identifier, or the end of it: coins100",
                       "fail, defer and store offline decide beforehand what becomes of it."};
    return command;
}

std::vector<Command> paymentCommands(Host& host) {
    return {
        buyCommand(host),
        about(host, "fail", "ID REASON", "let the next payment for a product fail: cancelled, network, …",
              [](LocalStore& store, const std::string& product, Arguments given) {
                  store.failNextPayment(product, parseFailure(given[0].text));
                  return "the next payment for " + product + " will fail: " + given[0].text;
              }),
        about(host, "defer", "ID", "let the next payment for a product wait for somebody's approval",
              [](LocalStore& store, const std::string& product, Arguments) {
                  store.deferNextPayment(product);
                  return "the next payment for " + product + " will wait for approval";
              }),
        about(host, "approve", "ID", "approve the payment that waits",
              [](LocalStore& store, const std::string& product, Arguments) {
                  store.approve(product);
                  return "the payment for " + product + " is approved";
              }),
        about(host, "decline", "ID", "decline the payment that waits",
              [](LocalStore& store, const std::string& product, Arguments) {
                  store.decline(product);
                  return "the payment for " + product + " is declined";
              }),
        about(host, "promote", "ID", "choose a product in the store, outside the app",
              [](LocalStore& store, const std::string& product, Arguments) {
                  store.promote(product);
                  return "the customer chooses " + product + " in the store";
              }),
    };
}

std::vector<Command> subscriptionCommands(Host& host) {
    return {
        about(host, "cancel", "ID", "let a subscription end with its period",
              [](LocalStore& store, const std::string& product, Arguments) {
                  store.setRenews(product, false);
                  return product + " will not renew";
              }),
        about(host, "billing", "ID ok|failing", "let renewals of a product be paid, or not",
              [](LocalStore& store, const std::string& product, Arguments given) {
                  const auto& state = given[0].text;
                  if (state != "ok" && state != "failing")
                      throw UsageError(unknownName("state of billing", state, {"ok", "failing"}));
                  store.setBillingFails(product, state == "failing");
                  return "renewals of " + product + (state == "ok" ? " are paid" : " are not paid");
              }),
    };
}

void runRestore(Host& host) {
    static_cast<void>(host.process());
    host.reporter().report("store", "restore", "the app asks for what was bought before");
    SKPaymentQueue::defaultQueue()->restoreCompletedTransactions();
}

void runRefund(Host& host, Arguments given) {
    auto& store = storeOf(host);
    const auto& text = given[0].text;
    const bool isTransaction = text.find_first_not_of("0123456789") == std::string::npos;
    const auto identifier = isTransaction ? text : productNamed(store.catalogue(), text);
    askStore([&] { store.refund(identifier); });
    host.reporter().report("store", "refund", identifier + " is refunded",
                           {{isTransaction ? "transaction" : "product", identifier}});
}

void runAdvance(Host& host, Arguments given) {
    auto& store = storeOf(host);
    const auto duration = parseStoreDuration(given[0].text);
    const auto now = askStore([&] {
        store.advance(duration);
        return store.now();
    });
    host.reporter().report("store", "advance", "the store's clock shows " + describe(now), {{"date", now}});
}

} // namespace

std::vector<Command> storeCommands(Host& host) {
    std::vector<Command> commands = paymentCommands(host);
    for (auto& command : subscriptionCommands(host)) commands.push_back(std::move(command));
    const std::vector<Command> others = {
        {"restore", "", "restore purchases, as an app's button does",
         [&host](Arguments) { runRestore(host); }},
        {"refund", "ID", "refund a purchase: its transaction, or a product for the latest one",
         [&host](Arguments given) { runRefund(host, given); }},
        {"advance", "DURATION", "let the store's clock jump ahead: 2h, 31d, 1w, 1y",
         [&host](Arguments given) { runAdvance(host, given); }},
    };
    commands.insert(commands.end(), others.begin(), others.end());
    for (auto& command : commands) command.reachesFar = true;
    return commands;
}

} // namespace corvantile::tool
