#include "CorvantileIAP/InappHelper.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantileReactive/Factories.hpp"

#include <atomic>
#include <exception>
#include <utility>

namespace corvantile {

namespace {

struct Settings {
    std::atomic<bool> debug{false};
};

Settings& settings() { return Platform::current().process().record<Settings>(); }

} // namespace

bool InappHelper::debug() { return settings().debug.load(std::memory_order_relaxed); }

void InappHelper::setDebug(bool debug) { settings().debug.store(debug, std::memory_order_relaxed); }

rx::Observable<StoreRequests::Products> InappHelper::request(ProductIdentifiers identifiers) {
    using Products = StoreRequests::Products;
    return rx::create<Products>([identifiers = std::move(identifiers)](rx::AnyObserver<Products> observer) {
        auto request = StoreRequests::shared()->products(
            identifiers, DispatchQueue::main(),
            [observer](const Products& products, const std::exception_ptr& error) {
                if (error) return observer.onError(error);
                observer.onNext(products);
                observer.onCompleted();
            });
        return rx::Disposable::create([request = std::move(request)]() mutable { request.reset(); });
    });
}

} // namespace corvantile
