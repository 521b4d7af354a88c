#include "CorvantilePlay/detail/Proof/ProofVerdict.hpp"

#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Inspection/StoredValues.hpp"
#include "CorvantilePlay/detail/Proof/PurchaseScenario.hpp"
#include "CorvantilePlay/detail/Proof/ScenarioPlay.hpp"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <utility>

namespace corvantile::tool {

namespace {

using Counts = std::map<std::string, int>; // of lines

Counts linesIn(const OutboxInspection& outbox) {
    Counts counts;
    for (const auto& package : outbox.packages) {
        if (package.kind == PackageKind::event) ++counts[eventLine(package.eventToken)];
        if (package.kind == PackageKind::subscription) ++counts[subscriptionLine(package.transactionId)];
    }
    return counts;
}

Counts linesIn(const std::filesystem::path& file) {
    Counts counts;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) ++counts[line];
    return counts;
}

std::vector<ScenarioRecord> records() {
    std::vector<ScenarioRecord> all;
    for (const auto& stage : scenarioStages())
        all.insert(all.end(), stage.records.begin(), stage.records.end());
    return all;
}

class Judge {
public:
    explicit Judge(std::filesystem::path folder) : folder_(std::move(folder)) {}

    [[nodiscard]] ProofVerdict judge() {
        const auto outbox = OutboxAdjust::inspect(state() / "outbox.sqlite");
        readable("outbox", outbox.fault, outbox.setAside);
        const auto lines = linesIn(outbox);
        compare("outbox", lines);
        compare("file", linesIn(sinkFileIn(folder_)));
        if (losers_.size() > 1) fault("the events of " + std::to_string(losers_.size()) + " transactions");
        const auto grace = lines.find(eventLine(graceEvent));
        verdict_.gracePeriodReports = grace == lines.end() ? 0 : grace->second;
        if (verdict_.gracePeriodReports < 1) fault("the grace period was never reported");
        examineKeychain();
        examineUserDefaults();
        return std::move(verdict_);
    }

private:
    [[nodiscard]] std::filesystem::path state() const { return stateIn(folder_); }
    void fault(std::string text) { verdict_.faults.push_back(std::move(text)); }

    void readable(const std::string& what, const std::string& text,
                  const std::vector<std::filesystem::path>& setAside) {
        if (!text.empty()) fault("the " + what + " cannot be read: " + text);
        if (!setAside.empty()) fault("the " + what + " was set aside");
    }

    // Each line is one transaction's, but for the total: of that it shows only how many there are.
    void compare(const std::string& sink, Counts left) {
        const int totals = std::exchange(left[eventLine(totalEvent)], 0);
        left.erase(eventLine(graceEvent));
        std::set<std::string> losers;
        int expectedTotals = 0;
        int lostWithTheirRecord = 0;
        for (const auto& record : records()) {
            bool isLastLost = false;
            for (const auto& line : linesOf(record))
                if (line == eventLine(totalEvent)) {
                    ++expectedTotals;
                    lostWithTheirRecord += isLastLost ? 1 : 0;
                } else if ((isLastLost = --left[line] < 0)) {
                    lose(sink, line);
                    losers.insert(record.marker);
                }
        }
        for (const auto& [line, count] : left)
            if (count > 0) tooOften(sink, line);
        const int lostTotals = expectedTotals - totals;
        if (lostTotals > 0) lose(sink, eventLine(totalEvent));
        if (lostTotals < lostWithTheirRecord) tooOften(sink, eventLine(totalEvent));
        if (lostTotals > (losers.empty() ? 1 : lostWithTheirRecord))
            fault(sink + ": the total of another transaction is missing");
        losers_.insert(losers.begin(), losers.end());
    }

    void lose(const std::string& sink, const std::string& line) {
        auto& lost = verdict_.lost;
        const auto sameElsewhere = std::find_if(lost.begin(), lost.end(), [&](const std::string& other) {
            return other.starts_with(line + " (");
        });
        if (sameElsewhere == lost.end())
            lost.push_back(line + " (" + sink + ")");
        else
            *sameElsewhere = line;
    }

    void tooOften(const std::string& sink, const std::string& line) {
        fault(sink + ": " + line + " is there too often");
    }

    void examineKeychain() {
        const auto inspection = Vault({.folder = state() / "keychain"}).inspect();
        for (const auto& text : inspection.faults) fault("keychain: " + text);
        if (!inspection.setAside.empty()) fault("the keychain was set aside");
        std::set<std::string> accounts;
        for (const auto& entry : inspection.entries)
            if (entry.dictionary)
                accounts.insert(entry.account);
            else
                fault("keychain entry " + entry.account + ": " + entry.fault);
        for (const auto& record : records())
            if (!accounts.contains(record.marker)) fault("the keychain lacks the marker " + record.marker);
    }

    void examineUserDefaults() {
        const auto file = state() / "user-defaults.sqlite";
        const auto [values, text] = readStoredValues(StateCopy(state()), PlayRegistry::framework().records());
        readable("user defaults", text, SQLiteUserDefaults::inspect(file).setAside);
        std::set<std::string> names;
        int records = 0;
        for (const auto& value : values) {
            names.insert(value.name);
            if (value.isRecord) ++records;
            if (!value.fault.empty()) fault(value.name + ": " + value.fault);
        }
        if (records < storedRecords) fault("records are missing");
        if (!names.contains(graceMarker)) fault("the grace period is not marked");
    }

    static constexpr int storedRecords = 2; // application and setting

    const std::filesystem::path folder_;
    ProofVerdict verdict_;
    std::set<std::string> losers_;
};

} // namespace

ProofVerdict judge(const std::filesystem::path& folder) { return Judge(folder).judge(); }

} // namespace corvantile::tool
