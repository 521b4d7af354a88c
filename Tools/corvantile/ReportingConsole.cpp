#include "Tools/corvantile/ReportingConsole.hpp"

#include "Tools/corvantile/Reporter.hpp"

#include <string>

namespace corvantile::tool {

ReportingConsole::ReportingConsole(Reporter& reporter) : reporter_(reporter) {}

ReportingConsole::~ReportingConsole() = default;

void ReportingConsole::print(std::string_view text) {
    if (text.starts_with(R"("\n<-+-)")) ++eventCount_;
    reporter_.tell("console", "console", std::string(text));
}

} // namespace corvantile::tool
