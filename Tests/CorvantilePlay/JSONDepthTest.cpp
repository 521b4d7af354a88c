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

// What a reader says of the text; empty when it has read it.
using Read = std::function<std::string(const std::string& json)>;
std::string refusal(const Read& read, const std::string& json) {
    try {
        return read(json);
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::string unless(bool isRead) { return isRead ? "" : "absent"; }
template <class Value>
std::string after(const Value&) {
    return "";
}

TEST(JSONFromOutside, IsReadUpToALimitOfNestingByEveryReader) {
    const struct {
        const char* reader;
        std::string valid;
        Read read;
    } cases[] = {
        {"decoding container", encodeJSON(PromoteInstall()),
         [](const auto& json) { return after(decodeJSON<PromoteInstall>(json)); }},
        {"event-token file", R"([{"token": "t", "name": "n"}])",
         [](const auto& json) {
             JSONDecoder::decodeArray(json, [](const auto&) {});
             return "";
         }},
        {"search-ads answer", encodeJSON(AdNetworkAttributionPayload()),
         [](const auto& json) { return after(decodeJSON<AdNetworkAttributionPayload>(json)); }},
        {"record", encodeJSON(Setting()),
         [](const auto& json) { return unless(Setting::fromJSON(json).has_value()); }},
        {"receipt", R"({"status": 0})", [](const auto& json) { return after(readStoreReceipt(json)); }},
        {"attribution server's answer", R"({"attribution": {"a": 1}})",
         [](const auto& json) {
             return unless(answerOf({.status = 200, .headers = {}, .body = json}).isAnswer);
         }},
        {"catalogue", sampleCatalogue,
         [](const auto& json) { return after(readCatalogue(json, "c.storekit")); }},
        {"record of the store", text(StoreClockSetting()),
         [](const auto& json) { return unless(recordFromText<StoreClockSetting>(json).has_value()); }},
        {"app.json", R"({"plugins": [], "bundleIdentifier": "com.example.app", "name": "n"})",
         [](const auto& json) {
             return after(parseAppDescription(json, "app.json", PlayRegistry::framework()));
         }},
    };
    for (const auto& [reader, valid, read] : cases) {
        SCOPED_TRACE(reader);
        const auto refused = [&, &readText = read, &text = valid](std::size_t depth) {
            return refusal(readText, nested(text, depth));
        };
        const auto beyond = refused(greatestJSONDepth + 1);
        EXPECT_NE(beyond, "");
        EXPECT_NE(beyond, refused(greatestJSONDepth));
        EXPECT_EQ(beyond, refused(100000)) << "which would overflow the stack";
    }
}

} // namespace corvantile::tool::JSONDepthTest
