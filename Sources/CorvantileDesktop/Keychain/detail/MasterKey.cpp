#include "CorvantileDesktop/Keychain/detail/MasterKey.hpp"

#include "CorvantileCrypto/OpenSSLRandom.hpp"
#include "CorvantileCrypto/SealedBox.hpp"
#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

#include <sys/mman.h>

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

SecretPage::SecretPage(std::string_view secret) : size_(secret.size()) {
    void* const page = ::mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) throw std::bad_alloc();
    ::madvise(page, size_, MADV_DONTDUMP);
    page_ = static_cast<char*>(page);
    std::memcpy(page_, secret.data(), size_);
}

SecretPage::SecretPage(SecretPage&& other) noexcept
    : page_(std::exchange(other.page_, nullptr)), size_(std::exchange(other.size_, 0)) {}

SecretPage::~SecretPage() {
    if (page_ == nullptr) return;
    ::explicit_bzero(page_, size_);
    ::munmap(page_, size_);
}

MasterKey::MasterKey(SecretPage file, FileIdentity identity) : file_(std::move(file)), identity_(identity) {}

std::optional<MasterKey> MasterKey::read(const PrivateFolder& folder) {
    const auto identity = FileIdentity::of(folder.path() / fileName);
    auto file = folder.readPrivateFile(fileName, fileSize + 1);
    if (!identity || !file) return std::nullopt;
    const bool isKey = file->size() == fileSize && file->starts_with(signature);
    std::optional<MasterKey> key;
    if (isKey) key.emplace(MasterKey(SecretPage(*file), *identity));
    wipe(*file);
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
    return file_.text().substr(signature.size(), identifierSize);
}

std::string_view MasterKey::key() const { return file_.text().substr(signature.size() + identifierSize); }

} // namespace corvantile
