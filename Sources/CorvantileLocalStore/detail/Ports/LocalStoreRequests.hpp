#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include <memory>

namespace corvantile {

class LocalStore;

// What is asked of a local store. It is looked up on the queue that the answer comes on.
class CORVANTILE_API LocalStoreRequests final : public StoreRequests {
public:
    explicit LocalStoreRequests(std::shared_ptr<LocalStore> store);
    ~LocalStoreRequests() override;

    [[nodiscard]] std::shared_ptr<PlatformRequest> products(const ProductIdentifiers& identifiers,
                                                            std::shared_ptr<DispatchQueue> queue,
                                                            ProductsCompletion completion) override;
    [[nodiscard]] std::shared_ptr<PlatformRequest> receipt(std::shared_ptr<DispatchQueue> queue,
                                                           ReceiptCompletion completion) override;

private:
    const std::shared_ptr<LocalStore> store_;
};

} // namespace corvantile
