#include "CorvantileTest/ScriptedStore.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"
#include "CorvantileTest/detail/ScriptedRequests.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

using State = SKPaymentTransactionState;

std::exception_ptr storeError(SKErrorCode code) {
    return std::make_exception_ptr(NSError(storeErrorDomain, static_cast<int>(code)));
}

} // namespace

ScriptedStore::ScriptedStore(std::shared_ptr<const DeviceLink> link, std::shared_ptr<DispatchQueue> mainQueue)
    : ObservedPaymentQueue(std::move(mainQueue)),
      link_(std::move(link)),
      requests_(std::make_unique<ScriptedRequests>()) {}

ScriptedStore::~ScriptedStore() = default;

std::shared_ptr<SKPaymentTransaction> ScriptedStore::makeTransaction(std::string productIdentifier,
                                                                     State state, SKErrorCode error) {
    return make(std::make_shared<SKPayment>(std::move(productIdentifier)), {state, error});
}

std::shared_ptr<SKPaymentTransaction> ScriptedStore::make(std::shared_ptr<const SKPayment> payment,
                                                          Outcome outcome) {
    auto& device = link_->device();
    SKPaymentTransaction::Facts facts{.payment = std::move(payment), .state = outcome.state};
    if (outcome.state == State::failed) facts.error = storeError(outcome.error);
    if (outcome.state == State::restored)
        facts.originalIdentifier = device.store().nextTransactionIdentifier();
    if (outcome.state == State::purchased || outcome.state == State::restored) {
        facts.identifier = device.store().nextTransactionIdentifier();
        facts.date = device.now();
    }
    return std::make_shared<SKPaymentTransaction>(std::move(facts));
}

void ScriptedStore::deliver(Transactions batch) {
    const std::lock_guard lock(mutex_);
    announce(std::move(batch));
}

// Call with the mutex held.
void ScriptedStore::announce(Transactions batch) {
    if (link_->isCut()) return;
    for (const auto& transaction : batch) link_->device().store().add(transaction);
    postUpdated(std::move(batch));
}

void ScriptedStore::promote(std::shared_ptr<SKProduct> product) {
    const auto payment = std::make_shared<SKPayment>(product->productIdentifier());
    postStorePayment(payment, std::move(product), [queue = shared_from_this(), payment](bool isWanted) {
        if (isWanted) queue->addPayment(payment);
    });
}

void ScriptedStore::answerNextPayment(State state, SKErrorCode error) {
    const std::lock_guard lock(mutex_);
    outcomes_.push_back({state, error});
}

void ScriptedStore::addPayment(std::shared_ptr<const SKPayment> payment) {
    const auto open = make(std::move(payment), {State::purchasing});
    const std::lock_guard lock(mutex_);
    announce({open});
    Outcome outcome;
    if (!outcomes_.empty()) {
        outcome = outcomes_.front();
        outcomes_.pop_front();
    }
    if (outcome.state != State::purchasing) conclude(*open, outcome);
}

void ScriptedStore::settle(const SKPaymentTransaction& open, State state, SKErrorCode error) {
    const std::lock_guard lock(mutex_);
    conclude(open, {state, error});
}

// Call with the mutex held.
void ScriptedStore::conclude(const SKPaymentTransaction& open, Outcome outcome) {
    if (link_->isCut()) return;
    auto later = make(std::make_shared<SKPayment>(open.payment()), outcome);
    if (link_->device().store().replace(open, later)) postUpdated({std::move(later)});
}

void ScriptedStore::failNextRestore(SKErrorCode error) {
    const std::lock_guard lock(mutex_);
    restoreFailures_.push_back(error);
}

void ScriptedStore::restoreCompletedTransactions() {
    const std::lock_guard lock(mutex_);
    if (auto failure = takeFailure(restoreFailures_)) return postRestoreFailed(std::move(failure));
    auto restorable = link_->device().store().restorable();
    Transactions batch;
    batch.reserve(restorable.size());
    for (auto& product : restorable) batch.push_back(makeTransaction(std::move(product), State::restored));
    announce(std::move(batch));
    postRestoreFinished();
}

void ScriptedStore::finishTransaction(const SKPaymentTransaction& transaction) {
    if (transaction.transactionState() == State::purchasing)
        throw NSError(storeErrorDomain, static_cast<int>(SKErrorCode::clientInvalid),
                      {{NSError::localizedDescriptionKey,
                        "A transaction that is still purchasing cannot be finished."}});
    const std::lock_guard lock(mutex_);
    if (link_->isCut()) return;
    finishes_.push_back({transaction.payment().productIdentifier(), transaction.transactionIdentifier()});
    if (auto removed = link_->device().store().remove(transaction)) postRemoved(std::move(removed));
}

ScriptedStore::Transactions ScriptedStore::transactions() const {
    const std::lock_guard lock(mutex_);
    return link_->device().store().unfinished();
}

std::vector<ScriptedStore::Finish> ScriptedStore::finishes() const {
    const std::lock_guard lock(mutex_);
    return finishes_;
}

// Call with the mutex held.
std::exception_ptr ScriptedStore::takeFailure(Failures& failures) {
    if (failures.empty()) return nullptr;
    const auto failure = failures.front();
    failures.pop_front();
    return storeError(failure);
}

void ScriptedStore::failNextProducts(SKErrorCode error) {
    const std::lock_guard lock(mutex_);
    productsFailures_.push_back(error);
}

void ScriptedStore::failNextReceipt(SKErrorCode error) {
    const std::lock_guard lock(mutex_);
    receiptFailures_.push_back(error);
}

std::shared_ptr<PlatformRequest> ScriptedStore::products(const ProductIdentifiers& identifiers,
                                                         std::shared_ptr<DispatchQueue> queue,
                                                         ProductsCompletion completion) {
    std::unique_lock lock(mutex_);
    productRequests_.push_back(identifiers);
    auto failure = takeFailure(productsFailures_);
    lock.unlock();
    Products known;
    if (!failure) known = link_->device().store().products();
    const auto isOther = [&](const auto& product) {
        return identifiers.count(product->productIdentifier()) == 0;
    };
    known.erase(std::remove_if(known.begin(), known.end(), isOther), known.end());
    return requests_->begin(*queue, [completion = std::move(completion), known = std::move(known),
                                     failure = std::move(failure)] { completion(known, failure); });
}

std::shared_ptr<PlatformRequest> ScriptedStore::receipt(std::shared_ptr<DispatchQueue> queue,
                                                        ReceiptCompletion completion) {
    std::unique_lock lock(mutex_);
    ++receiptRequests_;
    auto failure = takeFailure(receiptFailures_);
    lock.unlock();
    std::optional<std::string> text;
    if (!failure) text = link_->device().store().receipt();
    return requests_->begin(*queue, [completion = std::move(completion), text = std::move(text),
                                     failure = std::move(failure)] { completion(text, failure); });
}

void ScriptedStore::setRequestDelay(std::chrono::nanoseconds delay) { requests_->setDelay(delay); }
void ScriptedStore::setRequestsHanging(bool hanging) { requests_->setHanging(hanging); }

std::vector<ProductIdentifiers> ScriptedStore::productRequests() const {
    const std::lock_guard lock(mutex_);
    return productRequests_;
}

int ScriptedStore::receiptRequests() const {
    const std::lock_guard lock(mutex_);
    return receiptRequests_;
}

int ScriptedStore::requestsUnderWay() const { return requests_->underWay(); }
int ScriptedStore::cancelledRequests() const { return requests_->cancelled(); }

void ScriptedStore::close() { requests_->close(); }

} // namespace corvantile
