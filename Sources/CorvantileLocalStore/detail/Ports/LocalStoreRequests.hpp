#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include <memory>

namespace corvantile {

class LocalPaymentQueue;
class LocalStore;

// What is asked of a local store. Products are looked up on the queue that the answer comes on. A receipt is
// made inside the call: it shows the purchases of that moment, whatever is finished before the answer comes,
// and of the consumables those that the queue has delivered. So an observer that asks when it is given a
// purchase sees it exactly if no observer before it has finished it.
class CORVANTILE_API LocalStoreRequests final : public StoreRequests {
public:
    LocalStoreRequests(std::shared_ptr<LocalStore> store, std::shared_ptr<const LocalPaymentQueue> queue);
    ~LocalStoreRequests() override;

    [[nodiscard]] std::shared_ptr<PlatformRequest> products(const ProductIdentifiers& identifiers,
                                                            std::shared_ptr<DispatchQueue> queue,
                                                            ProductsCompletion completion) override;
    [[nodiscard]] std::shared_ptr<PlatformRequest> receipt(std::shared_ptr<DispatchQueue> queue,
                                                           ReceiptCompletion completion) override;

private:
    const std::shared_ptr<LocalStore> store_;
    const std::shared_ptr<const LocalPaymentQueue> queue_;
};

} // namespace corvantile
