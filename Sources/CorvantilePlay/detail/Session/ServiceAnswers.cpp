#include "CorvantilePlay/detail/Session/ServiceAnswers.hpp"

namespace corvantile::tool {

namespace {

// Numbers beyond 32 bits, as the service gives them. Newer systems get no `creativeSetId`.
constexpr std::string_view campaign =
    R"({"attribution":true,"campaignId":1234567890,"adGroupId":2345678901,"keywordId":3456789012,)"
    R"("conversionType":"Download","countryOrRegion":"US"})";

std::string accepted(std::string_view message) {
    return R"({"message":")" + std::string(message) +
           R"(","adid":"0123456789abcdef0123456789abcdef","attribution":{"tracker_token":"sample",)"
           R"("tracker_name":"Sample Network::Spring","network":"Sample Network","campaign":"Spring",)"
           R"("adgroup":"Coins","creative":"Banner"}})";
}

} // namespace

ServiceAnswer answerTo(std::string_view path) {
    if (path == "/session") return {200, accepted("Session tracked")};
    if (path == "/event") return {200, accepted("Event tracked")};
    if (path == "/v2/purchase") return {200, accepted("Subscription tracked")};
    if (path == "/api/v1/") return {200, std::string(campaign)};
    return {404, R"({"error":"This server plays no such path."})"};
}

} // namespace corvantile::tool
