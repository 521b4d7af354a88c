#pragma once

#include "Corvantile/Plugin/Products/SKProductRequestPluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"
#include "CorvantileReactive/DisposableSlot.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"
#include "HostCore/ActivityIndicator.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class RequestSlot;
struct RequestWatch;

// Loads the store's products for a fixed set of identifiers at every activation, and publishes them. An empty
// list is asked for again at once, up to three times an activation. Resigning cancels what was asked for and
// ends the asking again; a host's own `reload` is answered even then. What was published stays. Held by
// shared_ptr, as plug-ins are.
class CORVANTILE_API SKProductRequestPlugin final
    : public SKProductRequestPluggable,
      public std::enable_shared_from_this<SKProductRequestPlugin> {
public:
    // Asks for nothing yet.
    explicit SKProductRequestPlugin(const std::vector<std::string>& productIdentifiers);
    [[deprecated("Say what to load: SKProductRequestPlugin(productIdentifiers).")]] SKProductRequestPlugin();
    ~SKProductRequestPlugin() override;

    void didBecomeActive(UIApplication& application) override;
    void willResignActive(UIApplication& application) override;

    [[nodiscard]] rx::Observable<Products> products() override { return productsSubject_.asObservable(); }
    [[nodiscard]] rx::Observable<bool> isLoading() override { return indicator_.asObservable(); }
    [[nodiscard]] rx::Observable<std::exception_ptr> error() override { return errorSubject_.asObservable(); }
    void reload() override;

private:
    using Watch = std::shared_ptr<RequestWatch>;

    void loadSKProducts();
    void request(const Watch& watch);
    void cancel();
    void publish(const Products& products);
    void publishFailure(const std::exception_ptr& error);

    const ProductIdentifiers productIdentifiers_;
    rx::DisposableSlot loadDisposable_;
    const std::unique_ptr<RequestSlot> reloadDisposable_;
    const ActivityIndicator indicator_;
    const rx::ReplaySubject<std::exception_ptr> errorSubject_ =
        rx::ReplaySubject<std::exception_ptr>::create(1);
    const rx::ReplaySubject<Products> productsSubject_ = rx::ReplaySubject<Products>::create(1);
};

} // namespace corvantile
