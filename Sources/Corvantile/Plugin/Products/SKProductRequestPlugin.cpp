#include "Corvantile/Plugin/Products/SKProductRequestPlugin.hpp"

#include "Corvantile/Plugin/Products/detail/RequestSlot.hpp"
#include "Corvantile/detail/DebuggedStream.hpp"
#include "CorvantileIAP/InappHelper.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"

namespace corvantile {

namespace {

// Answers in a row that a watch looks at, a replayed one included.
constexpr int watchedLists = 3;

constexpr std::string_view requestPlugin = "Sources/Corvantile/Plugin/Products/SKProductRequestPlugin";

} // namespace

SKProductRequestProtocol::~SKProductRequestProtocol() = default;
SKProductRequestPluggable::~SKProductRequestPluggable() = default;

SKProductRequestPlugin::SKProductRequestPlugin(const std::vector<std::string>& productIdentifiers)
    : productIdentifiers_(productIdentifiers.begin(), productIdentifiers.end()),
      reloadDisposable_(std::make_unique<RequestSlot>()) {}

SKProductRequestPlugin::SKProductRequestPlugin() { unimplementedInitializer("SKProductRequestPlugin"); }

SKProductRequestPlugin::~SKProductRequestPlugin() { cancel(); }

void SKProductRequestPlugin::didBecomeActive(UIApplication&) { loadSKProducts(); }
void SKProductRequestPlugin::willResignActive(UIApplication&) { cancel(); }

void SKProductRequestPlugin::cancel() {
    reloadDisposable_->endWatch();
    loadDisposable_.disposeAndClear();
    reloadDisposable_->cancelRequest();
}

// The watch comes before the request. A list that is replayed to it counts, and is asked for at once when it
// is empty; the request that follows then takes that one's place.
void SKProductRequestPlugin::loadSKProducts() {
    const auto watch = reloadDisposable_->beginWatch();
    const auto lists = debugged(productsSubject_.take(watchedLists), requestPlugin, 41, "loadSKProducts()");
    // A watch that this one replaces goes on, beyond a resign as well: that ends the latest.
    loadDisposable_.exchange(lists.subscribe([weak = weak_from_this(), watch](const Products& products) {
        if (!products.empty()) return;
        if (const auto self = weak.lock()) self->request(watch);
    }));
    reload();
}

void SKProductRequestPlugin::reload() { request(nullptr); }

// `watch`: on whose behalf; null for somebody who is free to ask at any time.
void SKProductRequestPlugin::request(const Watch& watch) {
    const auto turn = reloadDisposable_->beginRequest(watch);
    if (!turn) return;
    const auto answers = InappHelper::request(productIdentifiers_)
                             .observeOn(rx::backgroundScheduler())
                             .subscribeOn(rx::backgroundScheduler());
    reloadDisposable_->keep(*turn, indicator_.trackActivity(debugged(answers, requestPlugin, 76, "reload()"))
                                       .subscribe(
                                           [weak = weak_from_this()](const Products& products) {
                                               if (const auto self = weak.lock()) self->publish(products);
                                           },
                                           [weak = weak_from_this()](const std::exception_ptr& error) {
                                               if (const auto self = weak.lock()) self->publishFailure(error);
                                           }));
}

void SKProductRequestPlugin::publish(const Products& products) {
    productsSubject_.onNext(products);
    errorSubject_.onNext(nullptr);
}

void SKProductRequestPlugin::publishFailure(const std::exception_ptr& error) {
    errorSubject_.onNext(error);
    productsSubject_.onNext({});
}

} // namespace corvantile
