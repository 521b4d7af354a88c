#include "CorvantileDesktop/Store/detail/StoreFile.hpp"
#include "CorvantileDesktop/detail/DesktopParts.hpp"
#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalPaymentQueue.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalStoreClock.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalStoreRequests.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <exception>
#include <string>
#include <system_error>
#include <utility>

namespace corvantile {

namespace {

Catalogue catalogueIn(const std::filesystem::path& file) {
    if (file.empty()) return {};
    const auto text = readFile(file);
    if (!text)
        throw localStoreError(LocalStoreErrorCode::unreadableCatalogue, file.string() + " cannot be read.");
    return readCatalogue(*text, file.string());
}

// The bundle finds the opaque receipt there.
std::function<void(const std::string&)> receiptWriter(std::filesystem::path file) {
    if (file.empty()) return nullptr;
    return [file = std::move(file)](const std::string& bytes) {
        // A receipt that cannot be written is one that an app does not find, as on a phone that lost it.
        if (readFile(file) != bytes) static_cast<void>(replaceFile(file, bytes));
    };
}

std::shared_ptr<StoreStorage> storageIn(const DesktopOptions& options, const Ports& made) {
    auto file = inState(options, "store.sqlite");
    if (file.empty()) return std::make_shared<InMemoryStoreStorage>();
    // Looked for now, before this launch makes one. The markers of purchases may be in it.
    std::error_code error;
    const bool hasKeychain = std::filesystem::exists(inState(options, "keychain") / "vault.sqlite", error);
    const auto storage = std::make_shared<StoreFile>(
        StoreFileOptions{.file = std::move(file),
                         .console = made.console,
                         .inBackground = inBackground(*made.queues, "corvantile.store"),
                         .hasPast = hasKeychain});
    storage->beginCounters();
    return storage;
}

std::shared_ptr<LocalStore> makeStore(const DesktopOptions& options, const Ports& made) {
    LocalStoreOptions store{.bundleIdentifier = options.bundleIdentifier,
                            .clock = made.clock,
                            .clockRate = options.store.clockRate,
                            .start = options.store.start,
                            .writeReceipt = receiptWriter(inState(options, "receipt")),
                            .console = made.console};
    try {
        store.catalogue = catalogueIn(options.store.catalogue);
    } catch (const NSError& error) {
        made.console->print("The store sells nothing: " + error.localizedDescription());
        store.catalogueError = std::current_exception();
    }
    store.storage = storageIn(options, made);
    return std::make_shared<LocalStore>(std::move(store));
}

} // namespace

LocalStore& DesktopPlatform::store() const { return *parts_->store; }

void DesktopPlatform::Parts::addStore(Ports& made, const DesktopOptions& options) {
    store = makeStore(options, made);
    const auto queue = LocalPaymentQueue::make(store, made.queues->main(), made.console);
    made.paymentQueue = queue;
    made.storeRequests = std::make_shared<LocalStoreRequests>(store, queue);
    if (options.store.setsAppTime && !options.store.catalogue.empty())
        made.clock = std::make_shared<LocalStoreClock>(store, made.clock);
}

} // namespace corvantile
