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
    Judge(std::filesystem::path folder, bool atLeastOnce)
        : folder_(std::move(folder)), atLeastOnce_(atLeastOnce) {}

    [[nodiscard]] ProofVerdict judge() {
        const auto outbox = OutboxAdjust::inspect(state() / "outbox.sqlite");
        readable("outbox", outbox.fault, outbox.setAside);
        const auto lines = linesIn(outbox);
        compare("outbox", lines);
        compare("file", linesIn(sinkFileIn(folder_)));
        if (affected_.size() > 1)
            fault("the events of " + std::to_string(affected_.size()) + " transactions");
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
    void compare(const std::string& sink, Counts found) {
        found.erase(eventLine(graceEvent));
        if (atLeastOnce_)
            allowRepeats(sink, std::move(found));
        else
            allowLosses(sink, std::move(found));
    }

    void allowLosses(const std::string& sink, Counts left) {
        const int totals = std::exchange(left[eventLine(totalEvent)], 0);
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
                    note(verdict_.lost, sink, line);
                    losers.insert(record.marker);
                }
        }
        noteSurplus(sink, left);
        const int lostTotals = expectedTotals - totals;
        if (lostTotals > 0) note(verdict_.lost, sink, eventLine(totalEvent));
        if (lostTotals < lostWithTheirRecord) tooOften(sink, eventLine(totalEvent));
        if (lostTotals > (losers.empty() ? 1 : lostWithTheirRecord))
            fault(sink + ": the total of another transaction is missing");
        affected_.insert(losers.begin(), losers.end());
    }

    // All of a transaction is sent again from its first line on, so that a total comes twice only with it.
    void allowRepeats(const std::string& sink, Counts left) {
        int surplusTotals = std::exchange(left[eventLine(totalEvent)], 0);
        int repeatedWithTotal = 0;
        for (const auto& record : records()) {
            bool isRepeated = false;
            for (const auto& line : linesOf(record))
                if (line == eventLine(totalEvent)) {
                    --surplusTotals;
                    repeatedWithTotal += isRepeated ? 1 : 0;
                } else if (--left[line] < 0) {
                    missing(sink, line);
                } else if (left[line] > 0) {
                    --left[line];
                    isRepeated = true;
                    note(verdict_.repeated, sink, line);
                    affected_.insert(record.marker);
                }
        }
        noteSurplus(sink, left);
        if (surplusTotals < 0) missing(sink, eventLine(totalEvent));
        if (surplusTotals > 0) note(verdict_.repeated, sink, eventLine(totalEvent));
        if (surplusTotals > repeatedWithTotal) tooOften(sink, eventLine(totalEvent));
    }

    static void note(std::vector<std::string>& list, const std::string& sink, const std::string& line) {
        const auto sameElsewhere = std::find_if(list.begin(), list.end(), [&](const std::string& other) {
            return other.starts_with(line + " (");
        });
        if (sameElsewhere == list.end())
            list.push_back(line + " (" + sink + ")");
        else
            *sameElsewhere = line;
    }

    void noteSurplus(const std::string& sink, const Counts& left) {
        for (const auto& [line, count] : left)
            if (count > 0) tooOften(sink, line);
    }

    void tooOften(const std::string& sink, const std::string& line) {
        fault(sink + ": " + line + " is there too often");
    }

    void missing(const std::string& sink, const std::string& line) {
        note(verdict_.lost, sink, line);
        fault(sink + ": " + line + " never came");
    }

    void examineKeychain() {
        const auto inspection = Vault({.folder = state() / "keychain"}).inspect();
        for (const auto& text : inspection.faults) fault("keychain: " + text);
        if (!inspection.setAside.empty()) fault("the keychain was set aside");
        std::set<std::string> accounts;
        for (const auto& entry : inspection.entries)
            if (!entry.dictionary)
                fault("keychain entry " + entry.account + ": " + entry.fault);
            else if (isPlainMarker(*entry.dictionary, entry.account))
                accounts.insert(entry.account);
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
            if (value.name.starts_with("pending_purchase_")) fault(value.name + " was left behind");
            if (value.isRecord) ++records;
            if (!value.fault.empty()) fault(value.name + ": " + value.fault);
        }
        if (records < storedRecords) fault("records are missing");
        if (!names.contains(graceMarker)) fault("the grace period is not marked");
    }

    static constexpr int storedRecords = 2; // application and setting

    const std::filesystem::path folder_;
    const bool atLeastOnce_;
    ProofVerdict verdict_;
    std::set<std::string> affected_; // transactions that lost, or repeat, a line
};

} // namespace

ProofVerdict judge(const std::filesystem::path& folder, bool atLeastOnce) {
    return Judge(folder, atLeastOnce).judge();
}

} // namespace corvantile::tool
