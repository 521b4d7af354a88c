#include "CorvantilePlay/detail/Receipts/Receipts.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Tests/CorvantilePlay/SampleCatalogue.hpp"
#include "Tests/CorvantilePlay/SampleFolder.hpp"

#include <sstream>

namespace corvantile::tool::ReceiptsTest {

// Transactions in no order: a trial of 2023-12-30, its conversion, a renewal that is over and one that is
// not, a purchase for good, and one of a product that nobody sells.
constexpr const char* allKinds = R"({"status": 0, "environment": "Sandbox", "latest_receipt_info": [
    {"transaction_id": "13", "original_transaction_id": "11", "product_id": "app.pro",
     "purchase_date": "2024-02-06 00:00:00 Etc/GMT", "expires_date": "2024-03-06 00:00:00 Etc/GMT"},
    {"transaction_id": "11", "original_transaction_id": "11", "product_id": "app.pro",
     "purchase_date": "2023-12-30 00:00:00 Etc/GMT", "expires_date": "2024-01-06 00:00:00 Etc/GMT",
     "is_trial_period": "true"},
    {"transaction_id": "12", "original_transaction_id": "11", "product_id": "app.pro",
     "purchase_date": "2024-01-06 00:00:00 Etc/GMT", "expires_date": "2024-04-06 00:00:00 Etc/GMT"},
    {"transaction_id": "14", "original_transaction_id": "11", "product_id": "app.pro",
     "purchase_date": "2024-03-06 00:00:00 Etc/GMT", "expires_date": "2024-04-06 00:00:00 Etc/GMT"},
    {"transaction_id": "21", "original_transaction_id": "21", "product_id": "app.themes",
     "purchase_date": "2024-03-01 00:00:00 Etc/GMT"},
    {"transaction_id": "31", "original_transaction_id": "31", "product_id": "app.gone",
     "purchase_date": "2024-03-02 00:00:00 Etc/GMT"}]})";

class Receipts : public testing::Test {
protected:
    Receipts() {
        options_.catalogue = folder_.write("Catalogue.storekit", sampleCatalogue);
        options_.receipts = {folder_.write("receipt.json", allKinds)};
        options_.now = "2024-03-10";
    }

    std::string explained(ExitCode expected = ExitCode::success) {
        std::ostringstream out, errors;
        CommandOutput output({out, errors}, json_);
        EXPECT_EQ(explainReceipts(options_, PlayRegistry::framework(), output), expected);
        EXPECT_EQ(errors.str().empty(), expected == ExitCode::success) << errors.str();
        return out.str();
    }

    const SampleFolder folder_;
    ReceiptOptions options_;
    bool json_ = false;
};

TEST_F(Receipts, AreExplainedTransactionByTransaction) {
    EXPECT_THAT(explained(), testing::EndsWith(R"(/receipt.json
  2023-12-30 00:00:00 +0000  11  app.pro     first purchase, a trial          trial_subscribe_app.pro 0 USD; subscription 0 USD; total_subscription 0 USD
  2024-01-06 00:00:00 +0000  12  app.pro     second, after a trial            trial_conversion_app.pro 4.99 USD; subscription 4.99 USD
  2024-02-06 00:00:00 +0000  13  app.pro     later purchase, over             silent: expired
  2024-03-01 00:00:00 +0000  21  app.themes  first purchase, does not expire  subscribe_app.themes 9.99 USD as revenue; total_subscription 9.99 USD
  2024-03-02 00:00:00 +0000  31  app.gone                                     silent: no category: the catalogue has no such product
  2024-03-06 00:00:00 +0000  14  app.pro     later purchase                   renew_app.pro 4.99 USD

Reported of each product, and the revenue
  app.gone    0 of 1  0
  app.pro     3 of 4  4.99 USD
  app.themes  1 of 1  9.99 USD

Revenue by month
  2024-01  4.99 USD  ####################
  2024-02  0 USD
  2024-03  9.99 USD  ########################################
)"));
}

TEST_F(Receipts, CountFromTheFirstDateAndOnceOnlyAsTheStateFolderKnows) {
    Vault vault({.folder = folder_.state() / "keychain"});
    vault.save({{"firstDate", Date::fromUnixSeconds(1704067200)}}, "firstDate", "com.example.app"); // 2024
    vault.save({{"21", true}}, "21", "com.example.app");
    options_.state = folder_.state();
    options_.receipts.push_back(options_.receipts.front());
    const auto text = explained();

    EXPECT_THAT(text,
                HasSubstr("11  app.pro                                      silent: before the first date"));
    EXPECT_THAT(text, HasSubstr("12  app.pro     later purchase                   renew_app.pro 4.99 USD"));
    EXPECT_THAT(text, HasSubstr("14  app.pro     later purchase                   silent: already marked"));
    EXPECT_THAT(text, HasSubstr("\n  app.pro     2 of 8  0 USD\n  app.themes  0 of 2  0 USD\n"));

    options_.firstDate = "2023-12-30";
    json_ = true;
    EXPECT_THAT(explained(), HasSubstr(R"("rule":"first purchase, a trial")"));
}

TEST_F(Receipts, TellWhatIsWrongWithAFile) {
    const auto file = folder_.write("status.json", R"({"status": 21003})");
    options_.receipts.insert(options_.receipts.begin(), file);
    EXPECT_THAT(
        explained(ExitCode::failed),
        testing::ContainsRegex("^wrong: .*status.json: The receipt is not authentic.\n.*/receipt.json\n"));

    options_.catalogue = file;
    EXPECT_THAT(explained(ExitCode::failed), HasSubstr("wrong: "));
    options_.receipts = {"/nowhere"};
    options_.catalogue = folder_.write("Catalogue.storekit", sampleCatalogue);
    EXPECT_THROW(explained(), UsageError);
}

TEST_F(Receipts, AreReportedAsTheAppDescribesIt) {
    folder_.write("app.json",
                  R"({"bundleIdentifier": "com.example.app", "store": {"catalogue": "Catalogue.storekit"},
        "plugins": [{"kind": "AnalyticPlugin"}, {"kind": "UserPreference"}, {"kind": "FirstDatePlugin"},
                    {"kind": "IAPReceiptPlugin", "configuration": {"products": [
                        {"identifier": "app.pro", "category": "pro"}, {"identifier": "app.gone"}]}},
                    {"kind": "IAPReceiptTrackingPlugin"}],
        "sinks": [{"kind": "ConsoleComponent", "name": "console", "ignore": ["renew_pro"]},
                  {"kind": "AdjustAnalyticComponent", "name": "adjust", "register": "command",
                   "configuration": {"eventTokenFile": "events"}}]})");
    folder_.write("events.json", R"([{"token": "abc123", "name": "renew_pro"}])");
    options_.app = folder_.app();
    options_.catalogue.clear();
    const auto text = explained();

    EXPECT_THAT(text, HasSubstr("trial_conversion_pro 4.99 USD; subscription 4.99 USD\n"));
    EXPECT_THAT(text, HasSubstr("silent: no category: the IAPReceiptPlugin does not list the product\n"));
    EXPECT_THAT(text, HasSubstr("silent: no category: the catalogue has no such product\n"));
    EXPECT_THAT(text, testing::EndsWith(R"(
The sinks that get them
  subscription reports  console             adjust (once a command registers it)
  renew_pro             console ignores it  adjust with token abc123 (once a command registers it)
  total_subscription    console             adjust has no token for it (once a command registers it)
  trial_conversion_pro  console             adjust has no token for it (once a command registers it)
  trial_subscribe_pro   console             adjust has no token for it (once a command registers it)
)"));

    json_ = true;
    EXPECT_THAT(explained(),
                HasSubstr(R"({"currency":"USD","event":"renew_pro","price":"4.99","sinks":[)"
                          R"({"accepts":false,"register":"launch","sink":"console"},)"
                          R"({"accepts":true,"hasToken":true,"register":"command","sink":"adjust",)"
                          R"("token":"abc123"}],"type":"event"})"));
}

TEST_F(Receipts, ComeFromACatalogueThatIsShownAsATable) {
    std::ostringstream out, errors;
    for (const bool json : {false, true}) {
        CommandOutput output({out, errors}, json);
        EXPECT_EQ(showCatalogue(options_.catalogue, output), ExitCode::success);
    }
    EXPECT_THAT(out.str(), HasSubstr("app.pro     RecurringSubscription  4.99 USD  P1M  free for P1W\n"));
    EXPECT_THAT(
        out.str(),
        HasSubstr(R"("price":"0.99","product":"app.coins","region":"US","title":"","type":"Consumable")"));
}

} // namespace corvantile::tool::ReceiptsTest
