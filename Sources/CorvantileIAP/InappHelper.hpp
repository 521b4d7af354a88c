#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"
#include "CorvantileReactive/Observable.hpp"

#include <memory>
#include <vector>

namespace corvantile {

// The store-receipt library's front door.
class CORVANTILE_API InappHelper {
public:
    InappHelper() = delete;

    // Off until set. Process-wide; threads: any.
    [[nodiscard]] static bool debug();
    static void setDebug(bool debug);

    // The products that the store knows of those asked for, possibly none, then completion; or the store's
    // error. Asks at each subscription and cancels at dispose. Answers on main; subscribe on any thread.
    [[nodiscard]] static rx::Observable<std::vector<std::shared_ptr<SKProduct>>>
    request(ProductIdentifiers identifiers);
};

} // namespace corvantile
