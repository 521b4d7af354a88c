#include "CorvantileDesktop/Keychain/detail/MasterKey.hpp"

#include "CorvantileCrypto/OpenSSLRandom.hpp"
#include "CorvantileCrypto/SealedBox.hpp"
#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <cstddef>
#include <cstring>
#include <utility>

namespace corvantile {

namespace {

constexpr std::string_view signature = "Corvantile key 1";
constexpr std::size_t identifierSize = 8;
constexpr std::size_t fileSize = signature.size() + identifierSize + SealedBox::keySize;

void wipe(std::string& secret) { ::explicit_bzero(secret.data(), secret.size()); }

std::string newFile() {
    std::string file(signature);
    file.resize(fileSize);
    OpenSSLRandom random;
    auto* const bytes = reinterpret_cast<unsigned char*>(file.data());
    if (!random.copyBytes(bytes + signature.size(), fileSize - signature.size()))
        throw keychainError(KeychainStatus::notAvailable, "There are no random bytes for a master key.");
    return file;
}

} // namespace

MasterKey::MasterKey(std::string file, FileIdentity identity) : file_(std::move(file)), identity_(identity) {}
MasterKey::MasterKey(MasterKey&& other) noexcept : identity_(other.identity_) { file_.swap(other.file_); }
MasterKey::~MasterKey() { wipe(file_); }

std::optional<MasterKey> MasterKey::read(const PrivateFolder& folder) {
    const auto identity = FileIdentity::of(folder.path() / fileName);
    auto file = folder.readPrivateFile(fileName, fileSize + 1);
    if (!identity || !file) return std::nullopt;
    MasterKey key(std::move(*file), *identity);
    if (key.file_.size() != fileSize || !key.file_.starts_with(signature)) return std::nullopt;
    return key;
}

MasterKey MasterKey::make(const PrivateFolder& folder,
                          const std::function<void(const std::string&)>& report) {
    const auto path = folder.path() / fileName;
    auto file = newFile();
    auto written = writeNewFile(path, file);
    if (written == WriteResult::exists) {
        if (const auto kept = quarantine(path)) {
            report(path.string() + " is no master key. It is kept as " + kept->filename().string() +
                   ", and a new key is made; what is sealed already cannot be read.");
            written = writeNewFile(path, file);
        }
    }
    wipe(file);
    auto key = written == WriteResult::written ? read(folder) : std::nullopt;
    if (!key) throw keychainError(KeychainStatus::io, "The master key could not be written.");
    return std::move(*key);
}

bool MasterKey::isStillIn(const std::filesystem::path& folder) const {
    return FileIdentity::of(folder / fileName) == identity_;
}

std::string_view MasterKey::identifier() const {
    return std::string_view(file_).substr(signature.size(), identifierSize);
}

std::string_view MasterKey::key() const {
    return std::string_view(file_).substr(signature.size() + identifierSize);
}

} // namespace corvantile
