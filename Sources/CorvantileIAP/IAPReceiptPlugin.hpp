#pragma once

#include "CorvantileIAP/IAPReceiptPluggable.hpp"
#include "CorvantileIAP/ProductCategory.hpp"
#include "CorvantileIAP/StoreReceipt.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantileReactive/DisposableSlot.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class DispatchQueue;
class PlatformRequest;

// Reads what was bought from the store's receipt: at every activation, and whenever the payment queue tells
// of something purchased or restored. A host that knows better hands in a receipt, or the records themselves;
// what came last counts. A store that has nothing to tell, or answers the same again, changes nothing and
// publishes nothing. The products come from the store too, unless the host hands them in; until they are
// known, transactions wait. Home: main, but for reading a receipt. Held by shared_ptr, as plug-ins are.
class CORVANTILE_API IAPReceiptPlugin final : public IAPReceiptPluggable,
                                              public std::enable_shared_from_this<IAPReceiptPlugin> {
public:
    struct Product {
        std::string identifier;
        std::string category = {}; // names the events of its purchases in place of the identifier
    };
    using Problems = std::vector<ReceiptProblem>;

    // The products whose purchases count; a receipt's other rows are left out, and reported. Observes the
    // default payment queue from now on.
    explicit IAPReceiptPlugin(std::vector<Product> products);
    [[deprecated("Say which products: IAPReceiptPlugin(products).")]] IAPReceiptPlugin();
    ~IAPReceiptPlugin() override;

    void didBecomeActive(UIApplication& application) override;
    // Cancels the requests that an activation has begun. One that a purchase has caused goes on: a consumable
    // that was finished meanwhile is in no later receipt.
    void willResignActive(UIApplication& application) override;
    void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override;

    [[nodiscard]] rx::Observable<std::vector<ProductCategory>> productCategories() override {
        return categories_.asObservable();
    }
    [[nodiscard]] rx::Observable<std::vector<RenewalInfo>> renewals() override {
        return renewals_.asObservable();
    }
    // What could not be read or fetched the last time, after each answer, replaying the last; empty when all
    // went well. Emits on main, before the categories. With InappHelper::debug they are printed as well.
    [[nodiscard]] rx::Observable<Problems> problems() { return problems_.asObservable(); }

    // Take effect on main, after the call, in the order of the calls. Threads: any.
    void setReceipt(std::string json);
    void setProducts(std::vector<std::shared_ptr<SKProduct>> products);
    // A category without a product is a fatal error.
    void setRecords(std::vector<ProductCategory> categories, std::vector<RenewalInfo> renewals);

private:
    using Weak = std::weak_ptr<IAPReceiptPlugin>;
    using Update = std::function<void(IAPReceiptPlugin&)>;
    using Take = void (IAPReceiptPlugin::*)(StoreReceipt receipt);
    enum class Refresh { no, yes };

    // What main then does with the receipt.
    [[nodiscard]] static Update readInBackground(const std::string& json, Take take);
    static void postToMain(const Weak& weak, Update update);

    enum class Cause { activation, purchase };
    struct ReceiptRequest {
        Cause cause;
        std::shared_ptr<PlatformRequest> request;
    };

    void refresh(Cause cause);
    void takeAnswer(std::uint64_t request, const Update& update);
    void askForProducts();
    void takeIfChanged(StoreReceipt receipt);
    void takeReceipt(StoreReceipt receipt);
    void takeProducts(const std::vector<std::shared_ptr<SKProduct>>& products);
    void publishCategories(Refresh refresh);
    void publish(const StoreReceipt& receipt, Refresh refresh);
    void report(const Problems& problems);

    std::vector<ReceiptProduct> catalogue_;
    bool areProductsKnown_ = false;
    bool hasRecords_ = false;
    std::optional<StoreReceipt> receipt_; // nullopt after records that the host has set
    bool isReceiptPublished_ = false;
    std::vector<StoreReceipt> waitingReceipts_; // earlier ones, which wait for the products with it
    std::map<std::uint64_t, ReceiptRequest> receiptRequests_; // in flight, by number
    std::uint64_t lastReceiptRequest_ = 0;
    std::uint64_t lastReceiptAnswer_ = 0; // the number of the latest request that was answered
    rx::DisposableSlot productRequest_;
    const std::shared_ptr<DispatchQueue> reader_;
    const rx::ReplaySubject<std::vector<ProductCategory>> categories_;
    const rx::ReplaySubject<std::vector<RenewalInfo>> renewals_;
    const rx::ReplaySubject<Problems> problems_;
    std::unique_ptr<PaymentObserverRegistration> registration_; // last: see there
};

} // namespace corvantile
