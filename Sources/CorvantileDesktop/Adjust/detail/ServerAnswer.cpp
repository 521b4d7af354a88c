#include "CorvantileDesktop/Adjust/detail/ServerAnswer.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <nlohmann/json.hpp>

#include <string_view>

namespace corvantile {

namespace {

using JSON = nlohmann::json;

// Missing also when it is something else than a text.
std::optional<std::string> textIn(const JSON& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::optional<double> numberIn(const JSON& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number()) return std::nullopt;
    return found->get<double>();
}

ADJAttribution attributionIn(const JSON& object, const std::optional<std::string>& adid) {
    return {.trackerToken = textIn(object, "tracker_token"),
            .trackerName = textIn(object, "tracker_name"),
            .network = textIn(object, "network"),
            .campaign = textIn(object, "campaign"),
            .adgroup = textIn(object, "adgroup"),
            .creative = textIn(object, "creative"),
            .clickLabel = textIn(object, "click_label"),
            .adid = adid,
            .costType = textIn(object, "cost_type"),
            .costAmount = numberIn(object, "cost_amount"),
            .costCurrency = textIn(object, "cost_currency")};
}

void read(const JSON& object, ServerAnswer& answer) {
    answer.message = textIn(object, "message");
    if (!answer.message) answer.message = textIn(object, "error");
    answer.timeStamp = textIn(object, "timestamp");
    answer.adid = textIn(object, "adid");
    const auto attribution = object.find("attribution");
    if (attribution == object.end() || !attribution->is_object()) return;
    answer.attribution = attributionIn(*attribution, answer.adid);
    answer.attributionText =
        attribution->dump(-1, ' ', true, JSON::error_handler_t::replace) + " " + answer.adid.value_or("");
}

bool isPlainOk(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos &&
           text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1) == "OK";
}

} // namespace

ServerAnswer answerOf(const HTTPResponse& response) {
    ServerAnswer answer;
    answer.status = response.status;
    answer.text = response.body;
    const bool isWell = response.status >= 200 && response.status < 300;
    const auto body = JSON::parse(response.body, nullptr, false);
    if (body.is_object()) read(body, answer);
    if (body.is_structured()) answer.json = response.body;
    answer.isAnswer = body.is_structured() || (isWell && isPlainOk(response.body));
    answer.isSuccess = answer.isAnswer && isWell;
    if (!answer.isAnswer)
        answer.message = "The server answered " + std::to_string(response.status) + " without JSON.";
    return answer;
}

ServerAnswer noAnswer(const std::exception_ptr& error) {
    ServerAnswer answer;
    answer.text = localizedDescription(error);
    answer.message = answer.text;
    return answer;
}

} // namespace corvantile
