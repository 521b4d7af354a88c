#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"

#include "Corvantile/Config/PromoteInstall.hpp"
#include "Corvantile/Plugin/AdNetwork/AdNetworkPlugin.hpp"
#include "Corvantile/Plugin/Database/Setting.hpp"
#include "CorvantileDesktop/Adjust/detail/ServerAnswer.hpp"
#include "CorvantileIAP/StoreReceipt.hpp"
#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantileLocalStore/Engine/detail/RecordCoding.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "Tests/CorvantilePlay/SampleCatalogue.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile::tool::JSONDepthTest {

std::string repeated(const char* text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) all += text;
    return all;
}

// The text with one more member in its last object, which brings it to `depth` levels in all.
std::string nested(std::string text, std::size_t depth) {
    const auto place = text.rfind('{') + 1;
    std::size_t outer = 0;
    for (const char character : text.substr(0, place)) {
        if (character == '{' || character == '[') ++outer;
        if (character == '}' || character == ']') --outer;
    }
    const auto pairs = (depth - outer) / 2;
    return text.insert(place, R"("x\"[": )" + repeated(R"({"a":[)", pairs) +
                                  ((depth - outer) % 2 == 1 ? "[]" : "") + repeated("]}", pairs) + ",");
}

TEST(JSONFromOutside, IsReadUpToALimitOfNestingByEveryReader) {
    const struct {
        const char* reader;
        std::string valid;
        std::function<void(const std::string& json)> read; // throws where it cannot
    } cases[] = {
        {"decoding container", encodeJSON(PromoteInstall()),
         [](const auto& json) { return decodeJSON<PromoteInstall>(json); }},
        {"event-token file", R"([{"token": "t", "name": "n"}])",
         [](const auto& json) { JSONDecoder::decodeArray(json, [](const auto&) {}); }},
        {"search-ads answer", encodeJSON(AdNetworkAttributionPayload()),
         [](const auto& json) { return decodeJSON<AdNetworkAttributionPayload>(json); }},
        {"record", encodeJSON(Setting()), [](const auto& json) { return Setting::fromJSON(json).value(); }},
        {"receipt", R"({"status": 0})", [](const auto& json) { return readStoreReceipt(json); }},
        {"attribution server's answer", R"({"attribution": {"a": 1}})",
         [](const auto& json) {
             const auto answer = answerOf({.status = 200, .headers = {}, .body = json});
             if (!answer.isAnswer) throw std::runtime_error("no answer");
         }},
        {"catalogue", sampleCatalogue, [](const auto& json) { return readCatalogue(json, "c.storekit"); }},
        {"record of the store", text(StoreClockSetting()),
         [](const auto& json) { return recordFromText<StoreClockSetting>(json).value(); }},
        {"app.json", R"({"plugins": [], "bundleIdentifier": "com.example.app", "name": "n"})",
         [](const auto& json) { return parseAppDescription(json, "app.json", PlayRegistry::framework()); }},
    };
    for (const auto& [reader, valid, read] : cases) {
        SCOPED_TRACE(reader);
        const auto refused = [&, &readText = read, &text = valid](std::size_t depth) {
            return thrownText<std::exception>([&] { readText(nested(text, depth)); });
        };
        const auto beyond = refused(greatestJSONDepth + 1);
        EXPECT_NE(beyond, "");
        EXPECT_NE(beyond, refused(greatestJSONDepth));
        EXPECT_EQ(beyond, refused(100000)) << "which would overflow the stack";
    }
}

} // namespace corvantile::tool::JSONDepthTest
