#include "CorvantileDesktop/Foundation/detail/FolderBundle.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"

#include <utility>

namespace corvantile {

namespace {

// The file system ends a name at NUL: "a\0b" would find "a".
bool isPlain(std::string_view part) {
    return part.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos &&
           part.find("..") == std::string_view::npos;
}

} // namespace

FolderBundle::FolderBundle(std::string identifier, std::filesystem::path folder,
                           std::filesystem::path receiptFile)
    : identifier_(std::move(identifier)), folder_(std::move(folder)), receiptFile_(std::move(receiptFile)) {}

std::optional<std::string> FolderBundle::resource(std::string_view name, std::string_view extension) const {
    if (folder_.empty() || name.empty() || !isPlain(name) || !isPlain(extension)) return std::nullopt;
    return readFile(folder_ / std::string(name).append(".").append(extension));
}

std::optional<std::string> FolderBundle::appStoreReceipt() const {
    if (receiptFile_.empty()) return std::nullopt;
    return readFile(receiptFile_);
}

} // namespace corvantile
