#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantileDesktop/Store/detail/StoreFile.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Inspection/StoredValues.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
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

class Doctor {
public:
    Doctor(fs::path folder, const PlayRegistry& registry) : state_(std::move(folder)), registry_(registry) {}

    [[nodiscard]] std::vector<Finding> examine() {
        for (const auto& [file, text] : state_.faults()) wrong(file, text);
        examineFolder();
        examineVendorIdentifier();
        examineUserDefaults();
        examineOutbox();
        examineStore();
        examineKeychain();
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
             {"vendor-identifier", "user-defaults.sqlite", "user-defaults.sqlite-wal", "outbox.sqlite",
              "outbox.sqlite-wal", "store.sqlite", "store.sqlite-wal", "receipt", "keychain",
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
        const auto inspection = Vault({.folder = state_.keychain()}).inspect();
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
    return output.end();
}

} // namespace corvantile::tool
