#include "Tools/corvantile/Prove/Prove.hpp"

#include "Tools/corvantile/Interruption.hpp"
#include "Tools/corvantile/Prove/KillRounds.hpp"
#include "Tools/corvantile/TemporaryFolder.hpp"
#include "Tools/corvantile/TextTable.hpp"

#include <nlohmann/json.hpp>

#include <iomanip>
#include <ostream>

namespace corvantile::tool {

namespace {

using Json = nlohmann::ordered_json;

struct Totals {
    std::size_t kills = 0, harmless = 0, losses = 0, faults = 0, repeatedGracePeriods = 0;

    void count(const ProofVerdict& verdict) {
        ++kills;
        ++(!verdict.faults.empty() ? faults : verdict.lost.empty() ? harmless : losses);
        if (verdict.gracePeriodReports > 1) ++repeatedGracePeriods;
    }
};

class Report {
public:
    Report(std::ostream& out, bool json) : out_(out), json_(json) {}

    void begin(std::size_t moments, std::size_t step) {
        if (json_) return;
        out_ << "A process that plays purchases is killed at " << (moments + step - 1) / step << " of "
             << moments << " moments; another goes on from there.\n\n";
        showRow("step", "killed", "lost for ever");
    }

    void tell(const KillRound& round) {
        const auto& verdict = round.verdict;
        totals_.count(verdict);
        if (json_) return tellAsJSON(round);
        auto lost = verdict.lost.empty() ? "nothing" : joined(verdict.lost, ", ");
        if (verdict.gracePeriodReports > 1) lost += "; the grace period is reported twice";
        showRow(std::to_string(round.number), round.moment, lost);
        for (const auto& fault : verdict.faults) out_ << "       BROKEN: " << fault << '\n';
        out_ << std::flush;
    }

    ExitCode end(std::size_t moments) {
        if (json_)
            out_ << Json{{"moments", moments},
                         {"kills", totals_.kills},
                         {"losses", totals_.losses},
                         {"repeatedGracePeriods", totals_.repeatedGracePeriods},
                         {"broken", totals_.faults}}
                        .dump()
                 << '\n';
        else
            tellTotals();
        return totals_.faults == 0 ? ExitCode::success : ExitCode::failed;
    }

private:
    void showRow(const std::string& step, const std::string& moment, const std::string& lost) {
        constexpr int width = 54;
        out_ << std::setw(4) << step << "  " << std::left << std::setw(width) << moment << std::right << "  "
             << lost << '\n';
    }

    void tellAsJSON(const KillRound& round) {
        out_ << Json{{"step", round.number},
                     {"killed", round.moment},
                     {"lost", round.verdict.lost},
                     {"gracePeriodReports", round.verdict.gracePeriodReports},
                     {"faults", round.verdict.faults}}
                    .dump(-1, ' ', false, Json::error_handler_t::replace)
             << std::endl;
    }

    void tellTotals() {
        out_ << '\n'
             << totals_.kills << " kills: " << totals_.harmless << " lost nothing, " << totals_.losses
             << " events of one transaction, " << totals_.repeatedGracePeriods
             << " made the grace period be reported twice.\n";
        if (totals_.faults == 0)
            out_ << "The promises hold: no transaction's event was sent twice, no kill cost events of more "
                    "than one,\nrecords and markers can be read.\n";
        else
            out_ << "Promises were broken at " << totals_.faults << " of them.\n";
    }

    std::ostream& out_;
    const bool json_;
    Totals totals_;
};

} // namespace

ExitCode prove(const ProveOptions& options, std::ostream& out) {
    constexpr std::size_t fewSteps = 3; // falls on befores and afters alike
    const auto step = options.isShort ? fewSteps : std::size_t{1};
    const TemporaryFolder folder;
    KillRounds rounds(folder.path());
    Report report(out, options.json);
    auto rehearsal = rounds.rehearse();
    if (!rehearsal.lost.empty())
        rehearsal.faults.push_back("lost without a kill: " + joined(rehearsal.lost, ", "));
    report.begin(rounds.moments().size(), step);
    if (!rehearsal.faults.empty()) {
        report.tell({.moment = "never: the rehearsal", .verdict = rehearsal});
        return report.end(rounds.moments().size());
    }
    rounds.run(step, [&](const KillRound& round) { report.tell(round); });
    return isInterrupted() ? ExitCode::interrupted : report.end(rounds.moments().size());
}

} // namespace corvantile::tool
