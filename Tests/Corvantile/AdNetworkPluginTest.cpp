#include "Corvantile/Plugin/AdNetwork/AdNetworkPlugin.hpp"

#include "CorvantileTest/ScriptedAds.hpp"
#include "CorvantileTest/ScriptedHTTP.hpp"
#include "HostCore/detail/URLText.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::AdNetworkPluginTest {

using namespace std::chrono_literals;

constexpr const char* endpoint = "https://api-adservices.apple.com/api/v1/";

AdNetworkInfo campaign(const char* campaign, const char* keyword, const char* creative, const char* adGroup) {
    return {{"SA_Campaign_ID", campaign},
            {"SA_Keyword_ID", keyword},
            {"SA_Creative_ID", creative},
            {"SA_Adgroup_ID", adGroup}};
}

class Attribution : public ProcessTest {
protected:
    // A new launch, and what `info` publishes in it.
    void launch() {
        plugin_ = std::make_shared<AdNetworkPlugin>();
        published_.clear();
        plugin_->info().subscribe([this](const AdNetworkInfo& info) {
            EXPECT_TRUE(DispatchQueue::main()->isCurrent());
            published_.push_back(info);
        });
        EXPECT_TRUE(plugin_->didFinishLaunchingWithOptions(*UIApplication::shared(), {}));
    }

    ScriptedHTTP& http_ = platform_->http();
    ScriptedAds& ads_ = platform_->ads();
    std::shared_ptr<AdNetworkPlugin> plugin_;
    std::vector<AdNetworkInfo> published_;
};

TEST_F(Attribution, PublishesWhatTheServerAnswersOnce) {
    const struct {
        int status;
        const char* body;
        AdNetworkInfo info;
    } cases[] = {
        {200, R"({"x": "y", "campaignId": 1, "keywordId": 2, "creativeSetId": 3, "adGroupId": 4})",
         campaign("1", "2", "3", "4")},
        {200, R"({"campaignId": 9223372036854775807, "keywordId": -9223372036854775808, "adGroupId": 3.0})",
         campaign("9223372036854775807", "-9223372036854775808", "0", "3")},
        {200, R"({"campaignId": null, "campaignid": 5, "AdGroupId": 6})", campaign("0", "0", "0", "0")},
        {500, R"({"keywordId": 7})", campaign("0", "7", "0", "0")},
        {200, R"({"campaignId": 1, "keywordId": "2"})", {}},
        {200, R"({"campaignId": 9223372036854775808})", {}},
        {200, R"([{"campaignId": 1}])", {}},
        {400, "bad token", {}},
    };
    for (const auto& [status, body, info] : cases) {
        SCOPED_TRACE(body);
        http_.answer(endpoint, {.status = status, .body = body}, 1s);
        launch();
        platform_->advance(1s - 1ns);
        EXPECT_THAT(published_, IsEmpty());
        platform_->advance(10s);
        EXPECT_THAT(published_, ElementsAre(info));
        EXPECT_THAT(lines(), IsEmpty());
    }
}

TEST_F(Attribution, PostsTheBareTokenAndGivesUpAfterSevenSeconds) {
    ads_.setToken("dG9rZW4=");
    launch(); // nobody there
    platform_->runUntilIdle();
    EXPECT_THAT(published_, ElementsAre(AdNetworkInfo{}));
    const auto request = http_.sent().at(0).request;
    EXPECT_EQ(request.method + " " + request.url, std::string("POST ") + endpoint);
    EXPECT_THAT(request.headers, ElementsAre(Pair("Content-Type", "text/plain")));
    EXPECT_EQ(request.body, "dG9rZW4=");

    http_.hang(endpoint);
    launch();
    platform_->advance(7s - 1ns);
    EXPECT_THAT(published_, IsEmpty());
    platform_->advance(1ns);
    EXPECT_THAT(published_, ElementsAre(AdNetworkInfo{}));
}

TEST_F(Attribution, IsEmptyAtOnceWhereThereAreNoTokens) {
    for (const auto& [version, publishedAtOnce] :
         {std::pair("14.2.1", 1u), {"9.3.5", 1u}, {"14.3", 0u}, {"14.10", 0u}}) {
        device_.setSystemVersion(version);
        launch();
        EXPECT_EQ(published_, std::vector<AdNetworkInfo>(publishedAtOnce)) << version;
    }
    EXPECT_EQ(ads_.tokenCalls(), 2);
    EXPECT_EQ(http_.sent().size(), 2u);
}

TEST_F(Attribution, IsAskedForToTheEndThoughNobodyIsLeftToPublishIt) {
    http_.answer(endpoint, {.status = 200, .body = "{}"}, 1s);
    launch();
    plugin_.reset();
    platform_->advance(10s);
    EXPECT_TRUE(published_.empty());
    EXPECT_FALSE(http_.sent()[0].isCancelled);
}

TEST_F(Attribution, ReadsTheAdvertisingIdentifierOnceAProcess) {
    launch();
    ads_.setAdvertisingIdentifier("C0FFEE00-0000-4000-8000-000000000001");
    EXPECT_EQ(plugin_->idfa(), "C0FFEE00-0000-4000-8000-000000000001");
    ads_.setAdvertisingIdentifier("C0FFEE00-0000-4000-8000-000000000002");
    EXPECT_EQ(AdNetworkPlugin().idfa(), "C0FFEE00-0000-4000-8000-000000000001");
}

TEST(URLTextDeathTest, TakesOnlyWhatCanBeAURL) {
    for (const char* text : {"", "https://exa mple.com", "a%2", "a%zz", "<a>", "caf\u00e9"})
        EXPECT_DEATH(static_cast<void>(urlText(text)),
                     "^Corvantile/AdNetworkPluginTest:[0-9]+: Fatal error: Invalid URL\\.\n$")
            << text;
}

} // namespace corvantile::AdNetworkPluginTest
