#include "CorvantileDesktop/Store/detail/DesktopStore.hpp"

#include "CorvantileDesktop/Foundation/detail/AtomicFile.hpp"
#include "CorvantileDesktop/Store/detail/StoreFile.hpp"
#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

#include <string>
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

std::function<void(const std::string&)> receiptWriter(const DesktopOptions& options) {
    if (options.stateFolder.empty()) return nullptr;
    return [file = options.stateFolder / "receipt"](const std::string& bytes) {
        // A receipt that cannot be written is one that an app does not find, as on a phone that lost it.
        if (readFile(file) != bytes) static_cast<void>(replaceFile(file, bytes));
    };
}

} // namespace

std::shared_ptr<LocalStore> makeDesktopStore(const DesktopOptions& options, std::shared_ptr<Clock> clock,
                                             std::shared_ptr<Console> console,
                                             std::function<void(std::function<void()>)> inBackground) {
    LocalStoreOptions made{.bundleIdentifier = options.bundleIdentifier,
                           .clock = std::move(clock),
                           .clockRate = options.store.clockRate,
                           .start = options.store.start,
                           .writeReceipt = receiptWriter(options),
                           .console = console};
    try {
        made.catalogue = catalogueIn(options.store.catalogue);
    } catch (const NSError& error) {
        console->print("The store sells nothing: " + error.localizedDescription());
        made.catalogueError = std::current_exception();
    }
    if (options.stateFolder.empty())
        made.storage = std::make_shared<InMemoryStoreStorage>();
    else
        made.storage =
            std::make_shared<StoreFile>(StoreFileOptions{.file = options.stateFolder / "store.sqlite",
                                                         .console = std::move(console),
                                                         .inBackground = std::move(inBackground)});
    return std::make_shared<LocalStore>(std::move(made));
}

} // namespace corvantile
