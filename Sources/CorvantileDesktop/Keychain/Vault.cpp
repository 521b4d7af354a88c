#include "CorvantileDesktop/Keychain/Vault.hpp"

#include "CorvantileDesktop/Keychain/detail/MasterKey.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultReader.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultSeal.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultWriter.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <atomic>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

VaultOptions withAbsoluteFolder(VaultOptions options) {
    std::error_code error;
    for (auto* const folder : {&options.folder, &options.keyFolder})
        if (!folder->empty()) *folder = fs::absolute(*folder, error);
    return options;
}

} // namespace

struct Vault::Parts {
    explicit Parts(VaultOptions given)
        : options(withAbsoluteFolder(std::move(given))),
          sealing(options.keyFolder.empty() ? options.folder : options.keyFolder,
                  [this](const std::string& text) { print(text); }),
          reader(file()),
          writer(file(), reader,
                 {.report = [this](const std::string& text) { print(text); },
                  .canRead =
                      [this](const SealedEntry& entry) { return sealing.open(entry).dictionary.has_value(); },
                  .inBackground = options.inBackground}) {}

    // Empty without a folder.
    [[nodiscard]] fs::path file() const {
        return options.folder.empty() ? fs::path() : options.folder / vaultFileName;
    }

    // False also when the file cannot be read.
    bool holds(std::string_view account, std::string_view service) {
        try {
            return reader.find(account, service).has_value();
        } catch (const NSError&) {
            return false; // the writer fails for the same reason, and reports it
        }
    }

    VaultInspection::Entry describe(SealedEntry entry) {
        OpenedEntry opened{std::nullopt, "the keychain is locked."};
        try {
            if (!locked.load()) opened = sealing.open(entry);
        } catch (const NSError& error) {
            opened.fault = error.localizedDescription();
        }
        return {std::move(entry.service), std::move(entry.account), std::move(opened.dictionary),
                std::move(opened.fault)};
    }

    void requireUnlocked() const {
        if (locked.load()) throw keychainError(KeychainStatus::interactionNotAllowed);
        if (!options.keyFolder.empty())
            throw keychainError(KeychainStatus::notAvailable, "A copy for inspection takes no entries.");
    }

    // Runs what changes the vault. An error is printed even where the caller ignores it.
    template <class Change>
    auto changing(Change change) {
        requireUnlocked();
        try {
            return change();
        } catch (const NSError& error) {
            reportOnce(error);
            throw;
        }
    }

    void reportOnce(const NSError& error) {
        const ReportingLock lock(mutex);
        const auto& [text, isNew] = reported.insert(error.localizedDescription());
        if (isNew) print("Keychain in " + options.folder.string() + ": " + *text);
    }

    void print(const std::string& text) const { printAfterLocks(options.console, text); }

    void reportUnreadable(std::string_view account, std::string_view service, std::string_view reason) const {
        if (options.reportsUnreadableEntries) print(unreadableEntryLine(account, service, reason));
    }

    // For good, unlike what is locked: the first entry of each reason is told to everybody.
    void reportLost(std::string_view account, std::string_view service, const std::string& reason) {
        const ReportingLock lock(mutex);
        const bool isFirst = reported.insert(reason).second;
        if (isFirst || options.reportsUnreadableEntries) print(unreadableEntryLine(account, service, reason));
    }

    const VaultOptions options;
    std::atomic<bool> locked{false};
    VaultSeal sealing;
    VaultReader reader;
    VaultWriter writer;
    std::mutex mutex; // of what follows
    std::set<std::string> reported;
};

Vault::Vault(VaultOptions options) : parts_(std::make_unique<Parts>(std::move(options))) {}
Vault::~Vault() = default;

std::optional<KeychainDictionary> Vault::load(std::string_view account, std::string_view service) const {
    if (isLocked()) {
        parts_->reportUnreadable(account, service, "the keychain is locked.");
        return std::nullopt;
    }
    try {
        const auto entry = parts_->reader.find(account, service);
        if (!entry) return std::nullopt;
        auto [dictionary, fault] = parts_->sealing.open(*entry);
        if (!dictionary) parts_->reportLost(account, service, fault);
        return std::move(dictionary);
    } catch (const NSError& error) {
        parts_->reportOnce(error);
        parts_->reportUnreadable(account, service, error.localizedDescription());
        return std::nullopt;
    }
}

void Vault::save(const KeychainDictionary& dictionary, std::string_view account, std::string_view service) {
    const bool isAdded = parts_->changing([&] {
        // Without a key the entry could not be read; a new key, made only to find it there, would hide why.
        if (!parts_->sealing.hasKey() && parts_->holds(account, service)) return false;
        return parts_->writer.add(parts_->sealing.seal(dictionary, account, service));
    });
    if (!isAdded) throw keychainError(KeychainStatus::duplicateItem);
}

void Vault::update(const KeychainDictionary& dictionary, std::string_view account, std::string_view service) {
    parts_->changing([&] { parts_->writer.put(parts_->sealing.seal(dictionary, account, service)); });
}

bool Vault::remove(std::string_view account, std::string_view service) {
    return parts_->changing([&] {
        // The writer would make a vault where there is none.
        return parts_->reader.find(account, service) && parts_->writer.remove(account, service);
    });
}

void Vault::setLocked(bool locked) { parts_->locked.store(locked); }
bool Vault::isLocked() const { return parts_->locked.load(); }

VaultInspection Vault::inspect() const {
    VaultInspection inspection;
    const auto attempt = [&inspection](auto look) {
        try {
            look();
        } catch (const NSError& error) {
            inspection.faults.push_back(error.localizedDescription());
        }
    };
    std::string fault;
    const auto file = parts_->file();
    auto sealed = VaultReader(file, VaultReader::Source::image).all(fault);
    if (fault.empty() && !file.empty() && !isStateMissing(file)) {
        fault = inspectState(file, vaultFormat).fault;
        if (!fault.empty()) fault = "The vault: " + fault + ".";
    }
    if (!fault.empty()) inspection.faults.push_back(fault);
    attempt([&] {
        if (!parts_->sealing.hasKey() && !sealed.empty())
            inspection.faults.emplace_back("There is no master key.");
    });
    for (auto& entry : sealed) inspection.entries.push_back(parts_->describe(std::move(entry)));
    for (const auto* const name : {vaultFileName, MasterKey::fileName})
        for (auto& kept : quarantinedFiles(parts_->options.folder / name))
            inspection.setAside.push_back(std::move(kept));
    return inspection;
}

} // namespace corvantile
