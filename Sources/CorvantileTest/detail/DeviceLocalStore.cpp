#include "CorvantileTest/detail/DeviceLocalStore.hpp"

#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"
#include "CorvantileTest/detail/DevicePorts.hpp"

#include <cstdint>
#include <utility>

namespace corvantile {

namespace {

class DeviceStoreStorage final : public StoreStorage {
public:
    explicit DeviceStoreStorage(std::shared_ptr<const DeviceLink> link) : link_(std::move(link)) {}

    Rows load() override { return link_->device().storeShelf().rows(version_); }
    bool hasChangedElsewhere() override {
        return !link_->isCut() && link_->device().storeShelf().version() != version_;
    }
    bool commit(const Changes& changes) override {
        return link_->isCut() || link_->device().storeShelf().commit(changes, version_);
    }

private:
    const std::shared_ptr<const DeviceLink> link_;
    std::uint64_t version_ = 0;
};

Catalogue catalogueOf(const std::string& text) {
    try {
        return readCatalogue(text, "The test's catalogue");
    } catch (const NSError& error) {
        fatalError(error.localizedDescription());
    }
}

} // namespace

std::shared_ptr<LocalStore> makeLocalStore(std::shared_ptr<const DeviceLink> link, const TestOptions& options,
                                           std::shared_ptr<Console> console) {
    const auto& chosen = options.localStore.value();
    return std::make_shared<LocalStore>(
        LocalStoreOptions{.catalogue = catalogueOf(chosen.catalogue),
                          .bundleIdentifier = options.bundleIdentifier,
                          .clock = makeClock(link),
                          .storage = std::make_shared<DeviceStoreStorage>(link),
                          .clockRate = chosen.clockRate,
                          .start = chosen.start,
                          .writeReceipt =
                              [link](const std::string& bytes) {
                                  if (!link->isCut()) link->device().setAppStoreReceipt(bytes);
                              },
                          .console = std::move(console)});
}

} // namespace corvantile
