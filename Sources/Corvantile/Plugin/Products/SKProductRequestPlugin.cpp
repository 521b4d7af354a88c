#include "Corvantile/Plugin/Products/SKProductRequestPlugin.hpp"

#include "Corvantile/Plugin/Products/detail/RequestSlot.hpp"
#include "Corvantile/detail/DebuggedStream.hpp"
#include "CorvantileIAP/InappHelper.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"

namespace corvantile {

namespace {

// How many lists in a row a watch checks, a replayed one included.
constexpr int watchedLists = 3;

// Fixed texts that log searches rely on; the numbers are not source positions.
constexpr std::string_view loadLabel = "SKProductRequestPlugin:41 (loadSKProducts())";
constexpr std::string_view reloadLabel = "SKProductRequestPlugin:76 (reload())";

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

// The watch begins before the request. A replayed list counts: if it is empty, it is requested at once, and
// the `reload` that follows replaces that request.
void SKProductRequestPlugin::loadSKProducts() {
    const auto watch = reloadDisposable_->beginWatch();
    const auto lists = debugged(productsSubject_.take(watchedLists), loadLabel);
    // The watch that this one replaces is not ended, not even by a resign: that ends only the latest.
    loadDisposable_.exchange(lists.subscribe([weak = weak_from_this(), watch](const Products& products) {
        if (!products.empty()) return;
        if (const auto self = weak.lock()) self->request(watch);
    }));
    reload();
}

void SKProductRequestPlugin::reload() { request(nullptr); }

// `watch`: on whose behalf; null for a caller that may request at any time.
void SKProductRequestPlugin::request(const Watch& watch) {
    const auto number = reloadDisposable_->beginRequest(watch);
    if (!number) return;
    const auto answers = InappHelper::request(productIdentifiers_)
                             .observeOn(rx::backgroundScheduler())
                             .subscribeOn(rx::backgroundScheduler());
    reloadDisposable_->keep(*number, indicator_.trackActivity(debugged(answers, reloadLabel))
                                         .subscribe(
                                             [weak = weak_from_this()](const Products& products) {
                                                 if (const auto self = weak.lock()) self->publish(products);
                                             },
                                             [weak = weak_from_this()](const std::exception_ptr& error) {
                                                 if (const auto self = weak.lock())
                                                     self->publishFailure(error);
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
