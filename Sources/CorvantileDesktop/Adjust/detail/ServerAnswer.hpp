#pragma once

#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"

#include <exception>
#include <optional>
#include <string>

namespace corvantile {

struct HTTPResponse;

// What a delivery came back with.
struct ServerAnswer {
    std::optional<int> status; // missing when nothing came back
    std::string text;          // the body, or why there is none

    // The server has taken notice of the package, well or ill: it answered in JSON, or a plain OK.
    bool isAnswer = false;
    bool isSuccess = false; // only of an answer

    std::optional<std::string> message, timeStamp, adid, json; // as the answer gives them
    std::optional<ADJAttribution> attribution;
    std::string attributionText; // the same as one text, for comparing
};

[[nodiscard]] ServerAnswer answerOf(const HTTPResponse& response);
[[nodiscard]] ServerAnswer noAnswer(const std::exception_ptr& error);

} // namespace corvantile
