#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantileDesktop/Store/detail/StoreFile.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Inspection/StoredValues.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace corvantile::tool {

namespace {

namespace fs = std::filesystem;

struct Finding {
    std::string what;
    bool isRight;
    std::string text;
};

class CollectingConsole final : public Console {
public:
    void print(std::string_view text) override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(text);
    }
    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

class Doctor {
public:
    Doctor(fs::path folder, const PlayRegistry& registry) : state_(std::move(folder)), registry_(registry) {}

    [[nodiscard]] std::vector<Finding> examine() {
        for (const auto& [file, text] : state_.faults()) wrong(file, text);
        examineFolder();
        examineVendorIdentifier();
        examineFiles();
        examineUserDefaults();
        examineOutbox();
        examineStore();
        examineKeychain();
        if (!isAnythingWrong()) examineStart();
        return std::move(findings_);
    }

private:
    void right(std::string what, std::string text) {
        findings_.push_back({std::move(what), true, std::move(text)});
    }
    void wrong(std::string what, std::string text) {
        findings_.push_back({std::move(what), false, std::move(text)});
    }

    void examineFolder() {
        const auto faultsBefore = findings_.size();
        examineAccess("", S_IWGRP | S_IWOTH, "go-w");
        for (const auto* const file :
             {"vendor-identifier", "vendor-identifier.copy", "user-defaults.sqlite",
              "user-defaults.sqlite-wal", "outbox.sqlite", "outbox.sqlite-wal", "store.sqlite",
              "store.sqlite-wal", "store-counters", "store-claims", "receipt", "keychain",
              "keychain/master.key", "keychain/vault.sqlite", "keychain/vault.sqlite-wal"})
            examineAccess(file, S_IRWXG | S_IRWXO, "go=");
        if (findings_.size() == faultsBefore) right("permissions", "nobody else gets in");
        for (const auto& folder : {state_.original(), state_.original() / "keychain"}) reportSetAside(folder);
    }

    void examineAccess(const std::string& name, unsigned forbidden, const char* remedy) {
        const auto path = name.empty() ? state_.original() : state_.original() / name;
        struct stat status {};
        if (::stat(path.c_str(), &status) != 0) return;
        if (status.st_uid != ::geteuid()) wrong(path.string(), "another user owns it");
        if ((status.st_mode & forbidden) != 0)
            wrong(path.string(), std::string("other users get in; chmod ") + remedy + " keeps them out");
    }

    [[nodiscard]] bool isAnythingWrong() const {
        return std::any_of(findings_.begin(), findings_.end(),
                           [](const Finding& finding) { return !finding.isRight; });
    }

    // A database's log, its shared memory, or a file that is being begun: the app opens or replaces them.
    void examineFiles() {
        static constexpr std::string_view endings[] = {".sqlite", "-wal", "-shm", ".new"};
        for (const auto& folder : {state_.original(), state_.original() / "keychain"}) {
            std::error_code error;
            for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
                const auto name = at->path().filename().string();
                const bool isOurs =
                    name.find(".sqlite") != std::string::npos &&
                    name.find(".set-aside-") == std::string::npos &&
                    std::any_of(std::begin(endings), std::end(endings),
                                [&](std::string_view ending) { return name.ends_with(ending); });
                if (isOurs) examineFile(at->path());
            }
        }
    }

    void examineFile(const fs::path& file) {
        std::error_code ignored;
        if (!fs::is_regular_file(file, ignored))
            wrong(file.string(), "it is in the way of a file of that name; move it elsewhere");
        else if (::access(file.c_str(), R_OK | W_OK) != 0)
            wrong(file.string(), "this user cannot read and write it");
    }

    // The app's own code has the last word: a process of it starts on the copy.
    void examineStart() {
        const auto console = std::make_shared<CollectingConsole>();
        const auto catalogue = state_.folder() / "catalogue.storekit";
        std::ofstream(catalogue) << R"({"version": {"major": 4, "minor": 0}, "products": []})";
        try {
            DesktopPlatform platform({.bundleIdentifier = "doctor",
                                      .stateFolder = state_.folder(),
                                      .console = console,
                                      .adjust = {.isOffline = true},
                                      .store = {.catalogue = catalogue}});
            static_cast<void>(platform.ports().userDefaults->dictionaryRepresentation());
            static_cast<void>(platform.adjust().packages());
            if (fs::exists(state_.store())) static_cast<void>(platform.store().purchases());
        } catch (const NSError& error) {
            console->print(error.localizedDescription());
        }
        for (const auto& line : console->lines()) wrong("start", ofTheOriginal(line));
        if (console->lines().empty()) right("start", "the app opens it all");
    }

    [[nodiscard]] std::string ofTheOriginal(std::string line) const {
        const auto copy = state_.folder().string();
        for (auto at = line.find(copy); at != std::string::npos; at = line.find(copy))
            line.replace(at, copy.size(), state_.original().string());
        return line;
    }

    // What was set aside is lost to the app until a person has looked at it.
    void reportSetAside(const fs::path& folder) {
        std::vector<std::string> names;
        std::error_code error;
        for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
            const auto name = at->path().filename().string();
            const bool isLog = name.ends_with("-wal") || name.ends_with("-shm");
            if (name.find(".set-aside-") != std::string::npos && !isLog) names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        for (const auto& name : names)
            wrong((folder / name).string(),
                  "it could not be used and was set aside; see what you need of it, "
                  "then move it elsewhere");
    }

    void examineVendorIdentifier() {
        if (!state_.faultOf("vendor-identifier").empty()) return;
        std::ifstream file(state_.folder() / "vendor-identifier");
        if (!file) return right("vendor identifier", "there is none yet");
        std::string text;
        std::getline(file, text);
        constexpr std::size_t lengthOfUUID = 36;
        if (text.size() == lengthOfUUID)
            right("vendor identifier", text);
        else
            wrong("vendor identifier", "the file holds none: the next launch makes a new one, under which it "
                                       "will not find the records");
    }

    void examineUserDefaults() {
        const auto [values, fault] = readStoredValues(state_, registry_.records());
        if (!state_.faultOf("user-defaults").empty()) return;
        if (fault.empty())
            right("user defaults", std::to_string(values.size()) + " values");
        else
            wrong("user defaults", fault + "; the next launch sets the file aside if it cannot be used");
        for (const auto& value : values)
            if (!value.fault.empty())
                wrong(value.name, value.fault);
            else if (value.isRecord)
                right(value.name, "decrypts");
    }

    void examineOutbox() {
        const auto inspection = OutboxAdjust::inspect(state_.outbox());
        if (!state_.faultOf("outbox").empty()) return;
        if (!inspection.fault.empty())
            return wrong("outbox",
                         inspection.fault + "; the next launch sets the file aside if it cannot be used");
        const auto& packages = inspection.packages;
        const auto waiting = std::count_if(packages.begin(), packages.end(), [](const OutboxEntry& package) {
            return package.state == PackageState::waiting;
        });
        right("outbox", std::to_string(packages.size()) + " packages, of which " + std::to_string(waiting) +
                            " wait to be delivered");
    }

    void examineStore() {
        if (!state_.faultOf("store").empty()) return;
        if (!fs::exists(state_.store())) return right("store", "it has not been used yet");
        const auto fault = faultOfStoreFile(state_.store());
        if (fault.empty()) return right("store", "opens");
        wrong("store", fault + "; the next launch sets the file aside if it cannot be used");
    }

    void examineKeychain() {
        const auto inspection = Vault(state_.keychain()).inspect();
        if (inspection.faults.empty() && state_.faultOf("keychain").empty())
            right("keychain", std::to_string(inspection.entries.size()) + " entries");
        for (const auto& fault : inspection.faults) wrong("keychain", fault);
        for (const auto& entry : inspection.entries) {
            const auto what = "keychain entry " + entry.account + " of " + entry.service;
            if (entry.dictionary)
                right(what, "opens");
            else
                wrong(what, "does not open: " + entry.fault);
        }
    }

    const StateCopy state_;
    const PlayRegistry& registry_;
    std::vector<Finding> findings_;
};

nlohmann::ordered_json fieldsOf(const Finding& finding) {
    return {
        {"name", finding.what}, {"ok", finding.isRight}, {finding.isRight ? "text" : "error", finding.text}};
}

std::string textLine(const Finding& finding) {
    return visibleText((finding.isRight ? "ok     " : "wrong  ") + finding.what + ": " + finding.text, 7);
}

} // namespace

ExitCode showHealth(const InspectOptions& options, const PlayRegistry& registry, CommandOutput& output) {
    for (const auto& finding : Doctor(inspectedFolder(options, registry), registry).examine()) {
        output.show("check", fieldsOf(finding), textLine(finding));
        if (!finding.isRight) output.noteError(finding.what + ": " + finding.text);
    }
    // An app that is named, or whose own folder this is.
    if (options.state.empty() || !options.app.empty())
        for (const auto& warning : readApp(options.app, registry).consumableWarnings())
            output.show("check", fieldsOf({"consumables", true, warning}),
                        visibleText("note   consumables: " + warning, 7));
    return output.end();
}

} // namespace corvantile::tool
