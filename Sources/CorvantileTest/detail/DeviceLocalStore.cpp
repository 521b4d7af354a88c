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
    ~DeviceStoreStorage() override { shelf().releaseAll(this); }

    Rows load() override { return shelf().rows(version_); }
    bool hasChangedElsewhere() override { return !link_->isCut() && shelf().version() != version_; }
    bool commit(const Changes& changes, const Claims& claimed) override {
        return link_->isCut() || shelf().commit(changes, version_, claimed, this);
    }
    bool claim(std::int64_t number) override { return !link_->isCut() && shelf().claim(number, this); }
    void release(std::int64_t number) override { shelf().release(number, this); }

private:
    [[nodiscard]] StoreShelf& shelf() const { return link_->device().storeShelf(); }

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
