#include "CorvantileIAP/StoreReceipt.hpp"

#include "Tests/CorvantileTest/Matchers.hpp"

#include <cmath>
#include <regex>

namespace corvantile::StoreReceiptTest {

using testing::Property;
using testing::Throws;

constexpr Date invalid = DecodingDefaults::invalidDate;
constexpr Date bought = Date::fromUnixSeconds(1604851257);
constexpr Date expires = Date::fromUnixSeconds(1607443257);

std::vector<std::string> texts(const std::vector<ReceiptProblem>& problems) {
    std::vector<std::string> texts;
    for (const auto& problem : problems) texts.push_back(describe(problem));
    return texts;
}

std::vector<std::int64_t> identifiers(const StoreReceipt& receipt) {
    std::vector<std::int64_t> identifiers;
    for (const auto& record : receipt.transactions) identifiers.push_back(record.transactionID);
    return identifiers;
}

TEST(StoreReceipt, TakesNumbersAndBooleansAsTextAndAsThemselves) {
    const ReceiptInfo row{
        1000000740000001, "pro.month", 2,       1000000056000000, bought,
        expires,          true,        false,   1000000740000001, Date::fromUnixSeconds(1604851258.5),
        "PURCHASED",      "20600000",  "winter"};
    const std::string inTexts =
        R"({"status": "0", "environment": "Sandbox", "latest_receipt_info": [{
          "quantity": "2", "product_id": "pro.month", "transaction_id": "1000000740000001",
          "original_transaction_id": "1000000740000001", "unknown": {"key": []},
          "purchase_date": "2020-11-08 16:00:57 Etc/GMT", "purchase_date_ms": "1604851257000",
          "original_purchase_date_ms": 1604851258.5e3, "expires_date_ms": "1607443257000", "cancellation_date": null,
          "web_order_line_item_id": "1000000056000000", "is_trial_period": "true", "is_in_intro_offer_period": "false",
          "in_app_ownership_type": "PURCHASED", "subscription_group_identifier": "20600000",
          "promotional_offer_id": "winter"}],
        "pending_renewal_info": [{"product_id": "pro", "auto_renew_status": "1", "expiration_intent": "2",
          "original_transaction_id": "7", "grace_period_expires_date_ms": "1607443257000"}]})";
    const auto text = readStoreReceipt(inTexts);
    const auto themselves =
        readStoreReceipt(std::regex_replace(inTexts, std::regex("\"(\\d+|true|false)\""), "$1"));

    EXPECT_EQ(text, themselves);
    EXPECT_THAT(text.transactions, ElementsAre(row));
    EXPECT_THAT(text.problems, IsEmpty());
    ASSERT_EQ(text.renewals.size(), 1u);
    EXPECT_EQ(text.renewals[0].willAutoRenew, true);
    EXPECT_EQ(text.renewals[0].expirationIntent, RenewalInfo::ExpirationIntent::billingError);
    EXPECT_EQ(text.renewals[0].gracePeriodExpiresDate, expires);
}

TEST(StoreReceipt, TakesDatesInEveryFormAndTheMillisecondsBeforeTheTexts) {
    const auto bad = [](std::string shown) {
        return std::vector<std::string>{"latest_receipt_info[0].expires_date: not a date: " + shown};
    };
    const struct {
        std::string members;
        Date expires;
        std::vector<std::string> problems = {};
    } cases[] = {
        {R"("expires_date_ms": "1607443257000", "expires_date": "nonsense")", expires},
        {R"("expires_date": "2020-12-08 16:00:57 Etc/GMT")", expires},
        {R"("expires_date": "2020-12-08T17:00:57.250+01:00")", expires},
        {R"("expires_date_pst": "2020-12-08 08:00:57 America/Los_Angeles")", expires},
        {R"("expires_date_pst": "2020-03-08 03:00:00 America/Los_Angeles")",
         Date::fromUnixSeconds(1583661600)},
        {R"("expires_date_pst": "2020-11-01 02:00:00 America/Los_Angeles")",
         Date::fromUnixSeconds(1604224800)},
        {R"("expires_date_ms": "", "expires_date": null)", invalid},
        {R"("expires_date": "soon", "expires_date_pst": "2020-12-08 16:00:57Z")", expires, bad("\"soon\"")},
        {R"("expires_date": "2020-02-30 16:00:57")", invalid, bad("\"2020-02-30 16:00:57\"")},
        {R"("expires_date": 1e300)", invalid, bad("1e+300")},
        {R"("expires_date": [1])", invalid, bad("a list")},
    };
    for (const auto& [members, expected, problems] : cases) {
        SCOPED_TRACE(members);
        const auto receipt = readStoreReceipt(
            R"({"latest_receipt_info": [{"transaction_id": 2, "product_id": "p",
                "original_transaction_id": 1, "purchase_date_ms": 0, )" +
            members + "}]}");
        ASSERT_EQ(receipt.transactions.size(), 1u);
        EXPECT_EQ(receipt.transactions[0].expiresDate, expected);
        EXPECT_EQ(texts(receipt.problems), problems);
    }
}

TEST(StoreReceipt, ReportsWhatItCannotReadAndUsesTheRest) {
    const auto receipt = readStoreReceipt(R"({"status": "fine", "latest_receipt_info": [
          {"transaction_id": "1", "product_id": "p", "is_trial_period": "perhaps",
           "web_order_line_item_id": 18446744073709551615},
          {"transaction_id": "2"}, {"transaction_id": 3.5, "product_id": "p"}, "row"],
        "pending_renewal_info": [{"auto_renew_status": "1"}, {"product_id": "p", "expiration_intent": "9"}],
        "receipt": {"in_app": "none"}})");

    EXPECT_THAT(texts(receipt.problems),
                ElementsAre("status: not a whole number of 64 bits: \"fine\"",
                            StartsWith("latest_receipt_info[0].web_order_line_item_id: not a whole number"),
                            "latest_receipt_info[0].purchase_date: missing",
                            "latest_receipt_info[0].is_trial_period: not true or false: \"perhaps\"",
                            "latest_receipt_info[0].original_transaction_id: missing",
                            "latest_receipt_info[1].product_id: missing, so the row is left out",
                            "latest_receipt_info[2].transaction_id: not a whole number of 64 bits: 3.5",
                            "latest_receipt_info[2].transaction_id: missing, so the row is left out",
                            "latest_receipt_info[3]: not a row: \"row\"", "in_app: not a list: \"none\"",
                            "pending_renewal_info[0].product_id: missing, so the row is left out"));
    ASSERT_THAT(identifiers(receipt), ElementsAre(1));
    EXPECT_EQ(receipt.transactions[0].purchaseDate, invalid);
    EXPECT_EQ(receipt.transactions[0].originalTransactionID, 0);
    EXPECT_EQ(receipt.renewals.size(), 1u);
}

TEST(StoreReceipt, TakesBothListsTogetherWhereverTheyStand) {
    const std::string a = R"({"transaction_id": "3", "product_id": "latest"},
                             {"transaction_id": "2", "product_id": "latest"})";
    const std::string b = R"({"transaction_id": "1", "product_id": "in_app"},
                             {"transaction_id": "2", "product_id": "in_app"})";
    for (const auto& json :
         {R"({"status": 0, "latest_receipt_info": [)" + a + R"(], "receipt": {"in_app": [)" + b + "]}}",
          R"({"notification_type": "DID_RENEW", "latest_receipt_info": {"transaction_id": "9"},
                                 "unified_receipt": {"latest_receipt_info": [)" +
              a + R"(], "in_app": [)" + b + "]}}"}) {
        SCOPED_TRACE(json);
        const auto receipt = readStoreReceipt(json);
        EXPECT_THAT(identifiers(receipt), ElementsAre(3, 2, 1));
        EXPECT_EQ(receipt.transactions[1].productID, "latest");
    }
    const auto single = R"({"latest_receipt_info": {"transaction_id": 7, "product_id": "p"}})";
    EXPECT_THAT(identifiers(readStoreReceipt(single)), ElementsAre(7));
}

TEST(StoreReceipt, ThatTellsNoPurchasesIsAnErrorThatSaysWhy) {
    const struct {
        std::string json;
        int code;
        std::string text;
    } cases[] = {
        {R"({"status": "21007"})", 21007, "test environment"},
        {R"({"status": 21155, "is-retryable": true})", 21155,
         "failed internally while it read the receipt. It may"},
        {R"({"status": 7, "receipt": {"in_app": []}})", 7, "for a reason of its own"},
        {R"({"unified_receipt": {"status": 21010}})", 21010, "nothing was ever bought"},
        {R"({"status": 0)", unreadableReceipt, "no JSON."},
        {"[]", unreadableReceipt, "no JSON object."},
        {R"({"products": []})", unreadableReceipt, "no receipt of the store"},
    };
    for (const auto& each : cases)
        EXPECT_THAT([&] { static_cast<void>(readStoreReceipt(each.json)); },
                    Throws<NSError>(AllOf(Property(&NSError::domain, receiptErrorDomain),
                                          Property(&NSError::code, each.code),
                                          Property(&NSError::localizedDescription, HasSubstr(each.text)))))
            << each.json;
    EXPECT_THAT(texts(readStoreReceipt(R"({"status": 21006})").problems),
                ElementsAre("status: The receipt is valid, but the subscription has expired."));
}

TEST(ReceiptInfoOrder, PutsTheNewestFirstAndTellsAnyTwoApart) {
    const auto record = [](double seconds, std::int64_t transaction, std::string offer = "") {
        return ReceiptInfo{.transactionID = transaction,
                           .purchaseDate = Date{seconds},
                           .promotionalOfferID = std::move(offer)};
    };
    const std::vector<ReceiptInfo> ordered = {record(3, 1),
                                              record(2, 9),
                                              record(2, 8),
                                              record(2, 8, "offer"),
                                              record(invalid.secondsSinceReference, 8),
                                              record(std::nan(""), 8)};

    for (std::size_t i = 0; i < ordered.size(); ++i)
        for (std::size_t j = 0; j < ordered.size(); ++j) EXPECT_EQ(ordered[i] < ordered[j], i < j) << i << j;
}

} // namespace corvantile::StoreReceiptTest
