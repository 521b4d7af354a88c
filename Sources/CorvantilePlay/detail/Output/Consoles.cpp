#include "CorvantilePlay/detail/Output/Consoles.hpp"

#include "CorvantilePlay/detail/Output/Reporter.hpp"

#include <string>

namespace corvantile::tool {

namespace {

thread_local std::size_t eventCount = 0;

} // namespace

ReportingConsole::ReportingConsole(Reporter& reporter) : reporter_(reporter) {}

ReportingConsole::~ReportingConsole() = default;

void ReportingConsole::print(std::string_view text) {
    if (text.starts_with(R"("\n<-+-)")) ++eventCount;
    reporter_.report("console", "console", std::string(text));
}

std::size_t ReportingConsole::eventsOfThisThread() { return eventCount; }

} // namespace corvantile::tool
