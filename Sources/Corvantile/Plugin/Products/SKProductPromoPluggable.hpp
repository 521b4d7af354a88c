#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <memory>
#include <string_view>

namespace corvantile {

// The plug-in under which a purchase begun in the store is looked up. Threads: main.
class CORVANTILE_API SKProductPromoPluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "SKProductPromoPluggable";

    ~SKProductPromoPluggable() override;

    // What was promoted last, until its purchase succeeds; null before. The host may clear or replace either.
    [[nodiscard]] virtual std::shared_ptr<SKProduct> product() const = 0;
    virtual void setProduct(std::shared_ptr<SKProduct> product) = 0;
    [[nodiscard]] virtual std::shared_ptr<SKPayment> payment() const = 0;
    virtual void setPayment(std::shared_ptr<SKPayment> payment) = 0;

    // True each time a promoted purchase is over, and each time one has arrived. The latest signal is
    // replayed.
    [[nodiscard]] virtual rx::Observable<bool> isFinished() = 0;
    [[nodiscard]] virtual rx::Observable<bool> isProductReady() = 0;
};

} // namespace corvantile
