#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/PlatformRequest.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantilePlatform/Store/SKProduct.hpp"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace corvantile {

class DispatchQueue;

using ProductIdentifiers = std::set<std::string, std::less<>>;

// What is asked of the store. Each completion comes on `queue` exactly once, never inside the call, unless
// the request is let go before or the platform ends. Threads: any.
class CORVANTILE_API StoreRequests : NonCopyable {
public:
    using Products = std::vector<std::shared_ptr<SKProduct>>;
    // Those of the requested products that the store knows, or an NSError.
    using ProductsCompletion = std::function<void(Products products, std::exception_ptr error)>;
    // The store's own account of what was bought, a JSON text; nullopt before anything was. Or an NSError.
    using ReceiptCompletion =
        std::function<void(std::optional<std::string> receiptJSON, std::exception_ptr error)>;

    virtual ~StoreRequests();

    // Those of the installed platform.
    [[nodiscard]] static std::shared_ptr<StoreRequests> shared();

    [[nodiscard]] virtual std::shared_ptr<PlatformRequest> products(const ProductIdentifiers& identifiers,
                                                                    std::shared_ptr<DispatchQueue> queue,
                                                                    ProductsCompletion completion) = 0;

    // The store's present answer; it has nothing to do with the opaque bytes in the bundle. A store of this
    // machine (desktop, test) answers as things stand during the call; the phone's promises no such moment.
    [[nodiscard]] virtual std::shared_ptr<PlatformRequest> receipt(std::shared_ptr<DispatchQueue> queue,
                                                                   ReceiptCompletion completion) = 0;
};

} // namespace corvantile
