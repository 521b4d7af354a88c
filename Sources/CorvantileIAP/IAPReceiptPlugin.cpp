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

void IAPReceiptPlugin::didBecomeActive(UIApplication&) { refresh(); }

void IAPReceiptPlugin::willResignActive(UIApplication&) {
    receiptRequest_.reset();
    productRequest_.disposeAndClear();
}

void IAPReceiptPlugin::updatedTransactions(SKPaymentQueue&, const Transactions& transactions) {
    const auto isPurchase = [](const auto& transaction) { return wasBought(*transaction); };
    if (std::any_of(transactions.begin(), transactions.end(), isPurchase)) refresh();
}

// Replaces the request in flight, which may have been answered before the purchase that causes this one.
void IAPReceiptPlugin::refresh() {
    askForProducts();
    receiptRequest_ = StoreRequests::shared()->receipt(
        reader_,
        [weak = weak_from_this()](const std::optional<std::string>& json, const std::exception_ptr& error) {
            if (error)
                postToMain(weak, [error](IAPReceiptPlugin& self) {
                    self.report({{"receipt", localizedDescription(error)}});
                });
            else if (json)
                readInBackground(weak, *json, &IAPReceiptPlugin::takeAnswer);
            else
                postToMain(weak, [](IAPReceiptPlugin& self) {
                    if (!self.hasRecords_) self.takeReceipt({});
                });
        });
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
        readInBackground(weak, json, &IAPReceiptPlugin::takeReceipt);
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
                self.report({});
                self.renewals_.onNext(renewals);
                self.categories_.onNext(categories);
            });
        });
}

void IAPReceiptPlugin::readInBackground(const Weak& weak, const std::string& json, Take take) {
    try {
        auto receipt = std::make_shared<StoreReceipt>(readStoreReceipt(json));
        postToMain(weak, [receipt, take](IAPReceiptPlugin& self) { (self.*take)(std::move(*receipt)); });
    } catch (const NSError& error) {
        const Problems problems = {{"receipt", error.localizedDescription()}};
        postToMain(weak, [problems](IAPReceiptPlugin& self) { self.report(problems); });
    }
}

void IAPReceiptPlugin::postToMain(const Weak& weak, Update update) {
    DispatchQueue::main()->async([weak, update = std::move(update)] {
        if (const auto self = weak.lock()) update(*self);
    });
}

// An answer equal to the last one is no refresh: publishing it again would begin another pass over records
// that the activation has gone through already.
void IAPReceiptPlugin::takeAnswer(StoreReceipt answer) {
    if (receipt_ == answer) return publishCategories(Refresh::no);
    takeReceipt(std::move(answer));
}

void IAPReceiptPlugin::takeReceipt(StoreReceipt receipt) {
    hasRecords_ = true;
    receipt_ = std::move(receipt);
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
    auto sorted = categorize(receipt_->transactions, catalogue_);
    auto problems = receipt_->problems;
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
