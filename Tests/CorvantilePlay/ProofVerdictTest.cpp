#include "CorvantilePlay/detail/Proof/ProofVerdict.hpp"

#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"
#include "CorvantilePlay/detail/Proof/PurchaseScenario.hpp"
#include "CorvantilePlay/detail/Proof/ScenarioPlay.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <algorithm>
#include <fstream>

// A proof that finds nothing must be able to find something.
namespace corvantile::tool::ProofVerdictTest {

class ProofVerdictTest : public testing::Test {
protected:
    ProofVerdictTest() {
        std::ofstream(folder.path() / "catalogue.storekit") << scenarioCatalogue();
        EXPECT_EQ(playScenario({.folder = folder.path(), .catalogue = folder.path() / "catalogue.storekit"}),
                  ExitCode::success);
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);) lines.push_back(line);
    }

    ProofVerdict verdictOn(const std::vector<std::string>& gone, const std::vector<std::string>& more,
                           bool atLeastOnce = false) const {
        auto left = lines;
        for (const auto& line : gone) left.erase(std::find(left.begin(), left.end(), line));
        left.insert(left.end(), more.begin(), more.end());
        std::ofstream stream(file);
        for (const auto& line : left) stream << line << '\n';
        stream.close();
        return judge(folder.path(), atLeastOnce);
    }

    struct Case {
        std::vector<std::string> gone, more;
        const char* fault; // a part of it; empty: none
    };
    void expectFaults(bool atLeastOnce, const std::vector<Case>& cases) const {
        for (const auto& [gone, more, fault] : cases) {
            SCOPED_TRACE(testing::PrintToString(gone) + testing::PrintToString(more));
            const auto verdict = verdictOn(gone, more, atLeastOnce);
            EXPECT_EQ(verdict.lost.empty(), gone.empty());
            EXPECT_EQ(verdict.gracePeriodReports, 1);
            if (*fault == '\0') {
                EXPECT_EQ(verdict.repeated.size(), more.size());
                EXPECT_THAT(verdict.faults, IsEmpty());
            } else {
                EXPECT_THAT(verdict.faults, ElementsAre(HasSubstr(fault)));
            }
        }
    }

    const std::string total = "event total_subscription", first = "event subscribe_gems";
    const std::string conversion = "event trial_conversion_pro", report = "subscription 200000000000006";
    const TemporaryFolder folder;
    const std::filesystem::path file = sinkFileIn(folder.path());
    std::vector<std::string> lines;
};

TEST_F(ProofVerdictTest, AllowsTheLossOfOneTransactionAndNothingElse) {
    expectFaults(false, {
                            {{}, {}, ""},
                            {{conversion}, {}, ""},
                            {{conversion, report}, {}, ""},
                            {{first, total}, {}, ""},
                            {{total}, {}, ""},
                            {{}, {conversion}, "trial_conversion_pro is there too often"},
                            {{}, {total}, "total_subscription is there too often"},
                            {{first}, {}, "total_subscription is there too often"}, // which goes with it
                            {{conversion, "event renew_pro"}, {}, "the events of 2 transactions"},
                            {{total, total}, {}, "the total of another transaction"},
                            {{conversion, total}, {}, "the total of another transaction"},
                            {{}, {"event unheard_of"}, "unheard_of is there too often"},
                        });
}

TEST_F(ProofVerdictTest, AllowsTheRepetitionOfOneTransactionUnderTheSecondPromise) {
    expectFaults(true, {
                           {{}, {}, ""},
                           {{}, {conversion, report}, ""},
                           {{}, {first, total}, ""},
                           {{}, {first}, ""},
                           {{conversion}, {}, "trial_conversion_pro never came"},
                           {{total}, {}, "total_subscription never came"},
                           {{}, {conversion, conversion}, "trial_conversion_pro is there too often"},
                           {{}, {total}, "total_subscription is there too often"}, // alone
                           {{}, {conversion, total}, "total_subscription is there too often"},
                           {{}, {conversion, first}, "the events of 2 transactions"},
                           {{}, {"event unheard_of"}, "unheard_of is there too often"},
                       });
}

TEST_F(ProofVerdictTest, MissesAMarkerAndFindsAPendingOne) {
    Vault({.folder = stateIn(folder.path()) / "keychain"}).remove("200000000000011", scenarioBundle);

    EXPECT_THAT(verdictOn({}, {}).faults, ElementsAre(HasSubstr("marker 200000000000011")));

    Vault({.folder = stateIn(folder.path()) / "keychain"})
        .save({{"200000000000011", true}, {"events", "{}"}}, "200000000000011", scenarioBundle);
    EXPECT_THAT(verdictOn({}, {}, true).faults, ElementsAre(HasSubstr("marker 200000000000011")));
}

} // namespace corvantile::tool::ProofVerdictTest
