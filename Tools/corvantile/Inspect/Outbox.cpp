#include "DesktopPlatform/Adjust/OutboxAdjust.hpp"
#include "Tools/corvantile/Faces/JSONLinesFace.hpp"
#include "Tools/corvantile/Faces/VisibleText.hpp"
#include "Tools/corvantile/Inspect/Inspect.hpp"
#include "Tools/corvantile/Inspect/StateCopy.hpp"
#include "Tools/corvantile/PackageText.hpp"

#include <ostream>
#include <string>

namespace corvantile::tool {

namespace {

std::string textLines(const OutboxEntry& package) {
    return visibleText(describe(package.created) + "  " + package.identifier + "\n" + describe(package), 2);
}

} // namespace

ExitCode showOutbox(const InspectOptions& options, std::ostream& out) {
    const StateCopy state(options.state);
    auto inspection = OutboxAdjust::inspect(state.outbox());
    if (const auto fault = state.faultOf("outbox"); !fault.empty()) inspection.fault = fault;
    for (const auto& package : inspection.packages)
        out << (options.json ? jsonText(fieldsOf(package)) : textLines(package)) << '\n';
    if (!inspection.fault.empty())
        out << (options.json ? jsonText(EventValue::Map{{"fault", inspection.fault}})
                             : "wrong: outbox: " + visibleText(inspection.fault))
            << '\n';
    else if (inspection.packages.empty() && !options.json)
        out << "The outbox is empty.\n";
    return inspection.fault.empty() ? ExitCode::success : ExitCode::failed;
}

} // namespace corvantile::tool
