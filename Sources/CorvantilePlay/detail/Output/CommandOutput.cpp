#include "CorvantilePlay/detail/Output/CommandOutput.hpp"

#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <nlohmann/json.hpp>

#include <ostream>
#include <utility>

namespace corvantile::tool {

CommandOutput::CommandOutput(Streams streams, bool isJSON) : streams_(streams), isJSON_(isJSON) {}

void CommandOutput::show(std::string_view kind, const nlohmann::ordered_json& fields, std::string_view text) {
    if (!isJSON_) return print(text);
    begin();
    streams_.out << jsonLine(kind, fields) << '\n';
}

void CommandOutput::print(std::string_view text) {
    if (!isJSON_) streams_.out << visibleText(text) << '\n';
}

void CommandOutput::showError(const std::string& text, const nlohmann::ordered_json& fields) {
    auto all = fields;
    all["error"] = text;
    show("error", all, "wrong: " + visibleText(text, 2));
    noteError(text);
}

void CommandOutput::noteError(const std::string& text) {
    hasFailed_ = true;
    if (streams_.areOne) return;
    streams_.out.flush(); // in the order of what happened
    streams_.errors << "corvantile: " << visibleText(text, 2) << '\n';
}

void CommandOutput::flush() { streams_.out.flush(); }

ExitCode CommandOutput::end() {
    begin(); // a program expects the first line also where nothing follows
    flush();
    return hasFailed_ ? ExitCode::failed : ExitCode::success;
}

// Late, so that a call with an error prints nothing.
void CommandOutput::begin() {
    if (isJSON_ && !std::exchange(hasBegun_, true)) streams_.out << formatLine() << '\n';
}

} // namespace corvantile::tool
