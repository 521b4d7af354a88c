#include "CorvantileDesktop/Adjust/detail/ServerAnswer.hpp"

#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "Fuzz/Input.hpp"

using namespace corvantile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const HTTPResponse response{.status = 200, .headers = {}, .body = std::string(fuzz::text(data, size))};
    const auto answer = answerOf(response);
    if (answer.isSuccess != answer.isAnswer || answer.text != response.body) __builtin_trap();
    // An attribution is remembered as text: the same one must be the same text, and never an empty one.
    if (answer.attribution && answer.attributionText.empty()) __builtin_trap();
    if (answer.attributionText != answerOf(response).attributionText) __builtin_trap();
    if (!answer.isAnswer && !answer.message) __builtin_trap();
    return 0;
}
