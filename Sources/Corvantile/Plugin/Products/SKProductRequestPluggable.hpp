#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <exception>
#include <memory>
#include <string_view>
#include <vector>

namespace corvantile {

class SKProduct;

// The store's products as a stream. The streams of products and errors emit on a background queue and replay
// their latest element, inside `subscribe`; before the first answer they hold none.
class CORVANTILE_API SKProductRequestProtocol : NonCopyable {
public:
    using Products = std::vector<std::shared_ptr<SKProduct>>;

    virtual ~SKProductRequestProtocol();

    // The latest list; the empty one after a failure.
    [[nodiscard]] virtual rx::Observable<Products> products() = 0;
    // Whether a request is in flight; emits on main.
    [[nodiscard]] virtual rx::Observable<bool> isLoading() = 0;
    // What the latest request failed with; empty after a success.
    [[nodiscard]] virtual rx::Observable<std::exception_ptr> error() = 0;

    // Requests the products again, replacing the request in flight. Threads: any.
    virtual void reload() = 0;
};

// The plug-in under which the store's products are looked up.
class CORVANTILE_API SKProductRequestPluggable : public virtual PluggableApplicationDelegateService,
                                                 public SKProductRequestProtocol {
public:
    static constexpr std::string_view typeName = "SKProductRequestPluggable";

    ~SKProductRequestPluggable() override;
};

} // namespace corvantile
