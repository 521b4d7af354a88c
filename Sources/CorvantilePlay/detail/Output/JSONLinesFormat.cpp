#include "CorvantilePlay/detail/Output/JSONLinesFormat.hpp"

#include "CorvantilePlay/detail/Text/JSONText.hpp"

#include <nlohmann/json.hpp>

#include <ostream>

namespace corvantile::tool {

std::string jsonLine(const PlayEvent& event) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(event.time).count();
    nlohmann::ordered_json line{
        {"time", static_cast<double>(milliseconds) / 1000}, {"who", event.who}, {"text", event.text}};
    const auto fields = toJSON(event.fields);
    line.insert(fields.begin(), fields.end());
    return jsonLine(event.kind, line);
}

JSONLinesFormat::JSONLinesFormat(std::ostream& stream) : stream_(stream) {
    stream_ << formatLine() << std::endl;
}

JSONLinesFormat::~JSONLinesFormat() = default;

void JSONLinesFormat::show(const PlayEvent& event) { stream_ << jsonLine(event) << std::endl; }

void JSONLinesFormat::showPrompt() {}

void JSONLinesFormat::endPrompt() {}

} // namespace corvantile::tool
