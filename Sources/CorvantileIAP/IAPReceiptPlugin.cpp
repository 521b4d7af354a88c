#include "CorvantileIAP/IAPReceiptPlugin.hpp"

#include "CorvantileIAP/InappHelper.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/PlatformRequest.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

namespace corvantile {

namespace {

std::vector<ReceiptProduct> catalogueOf(std::vector<IAPReceiptPlugin::Product> products) {
    std::vector<ReceiptProduct> catalogue;
    catalogue.reserve(products.size());
    for (auto& product : products)
        catalogue.push_back({std::move(product.identifier), std::move(product.category), nullptr});
    return catalogue;
}

bool wasBought(const SKPaymentTransaction& transaction) {
    const auto state = transaction.transactionState();
    return state == SKPaymentTransactionState::purchased || state == SKPaymentTransactionState::restored;
}

// All the transactions that `earlier` has, so that it need not be kept.
bool shows(const StoreReceipt& receipt, const StoreReceipt& earlier) {
    std::set<std::int64_t> shown;
    for (const auto& record : receipt.transactions) shown.insert(record.transactionID);
    return std::all_of(earlier.transactions.begin(), earlier.transactions.end(),
                       [&](const auto& record) { return shown.contains(record.transactionID); });
}

} // namespace

IAPReceiptPluggable::~IAPReceiptPluggable() = default;

IAPReceiptPlugin::IAPReceiptPlugin() : IAPReceiptPlugin(std::vector<Product>()) {
    unimplementedInitializer("IAPReceiptPlugin");
}

IAPReceiptPlugin::IAPReceiptPlugin(std::vector<Product> products)
    : catalogue_(catalogueOf(std::move(products))),
      reader_(
          Platform::current().ports().queues->makeSerial("corvantile.receipt", QualityOfService::utility)),
      categories_(rx::ReplaySubject<std::vector<ProductCategory>>::create(1)),
      renewals_(rx::ReplaySubject<std::vector<RenewalInfo>>::create(1)),
      problems_(rx::ReplaySubject<Problems>::create(1)),
      registration_(SKPaymentQueue::defaultQueue()->addTransactionObserver(*this)) {}

// The queue first: its callbacks would begin further requests.
IAPReceiptPlugin::~IAPReceiptPlugin() {
    registration_.reset();
    productRequest_.disposeAndClear();
}

void IAPReceiptPlugin::didBecomeActive(UIApplication&) { refresh(Cause::activation); }

void IAPReceiptPlugin::willResignActive(UIApplication&) {
    std::erase_if(receiptRequests_,
                  [](const auto& entry) { return entry.second.cause == Cause::activation; });
    productRequest_.disposeAndClear();
}

void IAPReceiptPlugin::updatedTransactions(SKPaymentQueue&, const Transactions& transactions) {
    const auto isPurchase = [](const auto& transaction) { return wasBought(*transaction); };
    if (std::any_of(transactions.begin(), transactions.end(), isPurchase)) refresh(Cause::purchase);
}

// An activation's request in flight is replaced; one that a purchase has caused is not: the receipt that it
// was given may be the only one that shows a consumable.
void IAPReceiptPlugin::refresh(Cause cause) {
    askForProducts();
    std::erase_if(receiptRequests_,
                  [](const auto& entry) { return entry.second.cause == Cause::activation; });
    const auto number = ++lastReceiptRequest_;
    const auto answer = [weak = weak_from_this(), number](Update update) {
        postToMain(weak, [number, update = std::move(update)](IAPReceiptPlugin& self) {
            self.takeAnswer(number, update);
        });
    };
    receiptRequests_[number] = {
        cause, StoreRequests::shared()->receipt(reader_, [answer](const std::optional<std::string>& json,
                                                                  const std::exception_ptr& error) {
            if (error)
                answer([error](IAPReceiptPlugin& self) {
                    self.report({{"receipt", localizedDescription(error)}});
                });
            else if (json)
                answer(readInBackground(*json, &IAPReceiptPlugin::takeIfChanged));
            else
                answer([](IAPReceiptPlugin& self) {
                    if (!self.hasRecords_) self.takeReceipt({});
                });
        })};
}

// A store may answer a later request first: what an earlier one says then is out of date.
void IAPReceiptPlugin::takeAnswer(std::uint64_t request, const Update& update) {
    receiptRequests_.erase(request);
    if (request < lastReceiptAnswer_) return;
    lastReceiptAnswer_ = request;
    update(*this);
}

void IAPReceiptPlugin::askForProducts() {
    ProductIdentifiers missing;
    for (const auto& known : catalogue_)
        if (!known.product) missing.insert(known.identifier);
    if (missing.empty()) return;
    productRequest_.disposeAndClear();
    const auto weak = weak_from_this();
    productRequest_.exchange(InappHelper::request(std::move(missing))
                                 .subscribe(
                                     [weak](const std::vector<std::shared_ptr<SKProduct>>& products) {
                                         if (const auto self = weak.lock()) self->takeProducts(products);
                                     },
                                     [weak](const std::exception_ptr& error) {
                                         if (const auto self = weak.lock())
                                             self->report({{"products", localizedDescription(error)}});
                                     }));
}

void IAPReceiptPlugin::setReceipt(std::string json) {
    reader_->async([weak = weak_from_this(), json = std::move(json)] {
        postToMain(weak, readInBackground(json, &IAPReceiptPlugin::takeReceipt));
    });
}

// Through the reader's queue, like receipts, so the order of the calls is kept.
void IAPReceiptPlugin::setProducts(std::vector<std::shared_ptr<SKProduct>> products) {
    reader_->async([weak = weak_from_this(), products = std::move(products)] {
        postToMain(weak, [products](IAPReceiptPlugin& self) { self.takeProducts(products); });
    });
}

void IAPReceiptPlugin::setRecords(std::vector<ProductCategory> categories,
                                  std::vector<RenewalInfo> renewals) {
    for (const auto& category : categories)
        if (!category.product) fatalError("A ProductCategory was given without its product.");
    reader_->async(
        [weak = weak_from_this(), categories = std::move(categories), renewals = std::move(renewals)] {
            postToMain(weak, [categories, renewals](IAPReceiptPlugin& self) {
                self.hasRecords_ = true;
                self.receipt_.reset();
                self.waitingReceipts_.clear();
                self.report({});
                self.renewals_.onNext(renewals);
                self.categories_.onNext(categories);
            });
        });
}

IAPReceiptPlugin::Update IAPReceiptPlugin::readInBackground(const std::string& json, Take take) {
    try {
        auto receipt = std::make_shared<StoreReceipt>(readStoreReceipt(json));
        return [receipt, take](IAPReceiptPlugin& self) { (self.*take)(std::move(*receipt)); };
    } catch (const NSError& error) {
        const Problems problems = {{"receipt", error.localizedDescription()}};
        return [problems](IAPReceiptPlugin& self) { self.report(problems); };
    }
}

void IAPReceiptPlugin::postToMain(const Weak& weak, Update update) {
    DispatchQueue::main()->async([weak, update = std::move(update)] {
        if (const auto self = weak.lock()) update(*self);
    });
}

// An answer equal to the last one is no refresh: publishing it again would begin another pass over records
// that the activation has gone through already.
void IAPReceiptPlugin::takeIfChanged(StoreReceipt receipt) {
    if (receipt_ == receipt) return publishCategories(Refresh::no);
    takeReceipt(std::move(receipt));
}

void IAPReceiptPlugin::takeReceipt(StoreReceipt receipt) {
    hasRecords_ = true;
    if (receipt_ && !isReceiptPublished_ && !shows(receipt, *receipt_))
        waitingReceipts_.push_back(*std::move(receipt_));
    receipt_ = std::move(receipt);
    isReceiptPublished_ = false;
    renewals_.onNext(receipt_->renewals);
    publishCategories(Refresh::yes);
}

void IAPReceiptPlugin::takeProducts(const std::vector<std::shared_ptr<SKProduct>>& products) {
    auto refresh = std::exchange(areProductsKnown_, true) ? Refresh::no : Refresh::yes;
    for (const auto& product : products)
        for (auto& known : catalogue_) {
            if (!product || known.identifier != product->productIdentifier()) continue;
            known.product = product;
            refresh = Refresh::yes;
        }
    publishCategories(refresh);
}

// The problems alone where nothing has changed: those of a failed request are over.
void IAPReceiptPlugin::publishCategories(Refresh refresh) {
    if (!receipt_) return;
    if (!areProductsKnown_ && !receipt_->transactions.empty()) return;
    if (areProductsKnown_)
        for (const auto& earlier : std::exchange(waitingReceipts_, {})) publish(earlier, Refresh::yes);
    isReceiptPublished_ = true;
    publish(*receipt_, refresh);
}

void IAPReceiptPlugin::publish(const StoreReceipt& receipt, Refresh refresh) {
    auto sorted = categorize(receipt.transactions, catalogue_);
    auto problems = receipt.problems;
    problems.insert(problems.end(), sorted.problems.begin(), sorted.problems.end());
    report(problems);
    if (refresh == Refresh::yes) categories_.onNext(sorted.categories);
}

void IAPReceiptPlugin::report(const Problems& problems) {
    if (InappHelper::debug())
        for (const auto& problem : problems)
            Platform::current().ports().console->print("Receipt --- " + describe(problem));
    problems_.onNext(problems);
}

} // namespace corvantile
