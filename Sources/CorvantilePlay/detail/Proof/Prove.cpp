#include "CorvantilePlay/detail/Proof/Prove.hpp"

#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Output/ToolProcess.hpp"
#include "CorvantilePlay/detail/Proof/KillRounds.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <nlohmann/json.hpp>

#include <iomanip>
#include <sstream>
#include <string>

namespace corvantile::tool {

namespace {

struct Totals {
    std::size_t kills = 0, harmless = 0, losses = 0, repeats = 0, faults = 0, repeatedGracePeriods = 0;

    void count(const ProofVerdict& verdict) {
        ++kills;
        ++(!verdict.faults.empty()     ? faults
           : !verdict.lost.empty()     ? losses
           : !verdict.repeated.empty() ? repeats
                                       : harmless);
        if (verdict.gracePeriodReports > 1) ++repeatedGracePeriods;
    }
};

class ProofReport {
public:
    ProofReport(const ProveOptions& options, CommandOutput& output)
        : atLeastOnce_(options.atLeastOnce), output_(output) {}

    void begin(std::size_t moments, std::size_t step) {
        output_.print("A process that plays purchases is killed at " +
                      std::to_string((moments + step - 1) / step) + " of " + std::to_string(moments) +
                      " moments; another goes on from there.\n");
        output_.print(row("step", "killed", atLeastOnce_ ? "sent twice" : "never sent"));
    }

    void show(const KillRound& round) {
        const auto& verdict = round.verdict;
        totals_.count(verdict);
        const auto& lines = atLeastOnce_ ? verdict.repeated : verdict.lost;
        auto affected = lines.empty() ? "nothing" : joined(lines, ", ");
        if (verdict.gracePeriodReports > 1) affected += "; the grace period is reported twice";
        auto text = row(std::to_string(round.number), round.moment, affected);
        for (const auto& error : verdict.faults) text += "\n       BROKEN: " + error;
        output_.show("kill",
                     {{"step", round.number},
                      {"killed", round.moment},
                      {"lost", verdict.lost},
                      {"repeated", verdict.repeated},
                      {"gracePeriodReports", verdict.gracePeriodReports},
                      {"errors", verdict.faults}},
                     text);
        for (const auto& error : verdict.faults) output_.noteError(round.moment + ": BROKEN: " + error);
        output_.flush();
    }

    void end(std::size_t moments) {
        output_.show("summary",
                     {{"moments", moments},
                      {"kills", totals_.kills},
                      {"losses", totals_.losses},
                      {"repeats", totals_.repeats},
                      {"repeatedGracePeriods", totals_.repeatedGracePeriods},
                      {"broken", totals_.faults}},
                     summary());
    }

private:
    static std::string row(const std::string& step, const std::string& moment, const std::string& lost) {
        constexpr int width = 54;
        std::ostringstream line;
        line << std::setw(4) << step << "  " << std::left << std::setw(width) << moment << "  " << lost;
        return line.str();
    }

    [[nodiscard]] std::string summary() const {
        const auto affected =
            atLeastOnce_
                ? " repeated nothing, " + std::to_string(totals_.repeats) + " events of one transaction, "
                : " lost nothing, " + std::to_string(totals_.losses) + " events of one transaction, ";
        const auto counts =
            "\n" + std::to_string(totals_.kills) + " kills: " + std::to_string(totals_.harmless) + affected +
            std::to_string(totals_.repeatedGracePeriods) + " made the grace period be reported twice.\n";
        if (totals_.faults > 0)
            return counts + "Promises were broken at " + std::to_string(totals_.faults) + " of them.";
        return counts + (atLeastOnce_ ? secondPromise : firstPromise);
    }

    static constexpr const char* firstPromise =
        "The promises hold: no transaction's event was sent twice, no kill cost events of more than "
        "one,\nrecords and markers can be read.";
    static constexpr const char* secondPromise =
        "The promises hold: no kill cost an event, none had events of more than one transaction sent "
        "twice,\nrecords and markers can be read. A sink tells a repeated subscription by its "
        "transaction;\nan event has no identifier.";

    const bool atLeastOnce_;
    CommandOutput& output_;
    Totals totals_;
};

} // namespace

ExitCode prove(const ProveOptions& options, CommandOutput& output) {
    constexpr std::size_t fewSteps = 3; // falls on befores and afters alike
    const auto step = options.isShort ? fewSteps : std::size_t{1};
    const TemporaryFolder folder;
    KillRounds rounds(folder.path(), options.atLeastOnce);
    ProofReport report(options, output);
    auto rehearsal = rounds.rehearse();
    if (!rehearsal.lost.empty())
        rehearsal.faults.push_back("lost without a kill: " + joined(rehearsal.lost, ", "));
    if (!rehearsal.repeated.empty())
        rehearsal.faults.push_back("sent twice without a kill: " + joined(rehearsal.repeated, ", "));
    report.begin(rounds.moments().size(), step);
    if (rehearsal.faults.empty())
        rounds.run(step, [&](const KillRound& round) { report.show(round); });
    else
        report.show({.moment = "never: the rehearsal", .verdict = rehearsal});
    if (mustStop()) return ExitCode::interrupted;
    report.end(rounds.moments().size());
    return output.end();
}

} // namespace corvantile::tool
