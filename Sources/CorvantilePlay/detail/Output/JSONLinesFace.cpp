#include "CorvantilePlay/detail/Output/JSONLinesFace.hpp"

#include "CorvantilePlay/detail/Text/JSONText.hpp"

#include <nlohmann/json.hpp>

#include <ostream>

namespace corvantile::tool {

std::string jsonLine(const Happening& happening) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(happening.time).count();
    nlohmann::ordered_json line{
        {"time", static_cast<double>(milliseconds) / 1000}, {"who", happening.who}, {"text", happening.text}};
    const auto fields = toJSON(happening.fields);
    line.insert(fields.begin(), fields.end());
    return jsonLine(happening.kind, line);
}

JSONLinesFace::JSONLinesFace(std::ostream& stream) : stream_(stream) { stream_ << formatLine() << std::endl; }

JSONLinesFace::~JSONLinesFace() = default;

void JSONLinesFace::show(const Happening& happening) { stream_ << jsonLine(happening) << std::endl; }

void JSONLinesFace::invite() {}

void JSONLinesFace::answered() {}

} // namespace corvantile::tool
