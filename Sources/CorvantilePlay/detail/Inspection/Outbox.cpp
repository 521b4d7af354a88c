#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Output/CommandOutput.hpp"
#include "CorvantilePlay/detail/Text/JSONText.hpp"
#include "CorvantilePlay/detail/Text/PackageText.hpp"
#include "CorvantilePlay/detail/Text/VisibleText.hpp"

#include <nlohmann/json.hpp>

#include <string>

namespace corvantile::tool {

namespace {

std::string textLines(const OutboxEntry& package) {
    return visibleText(describe(package.created) + "  " + package.identifier + "\n" + describe(package), 2);
}

} // namespace

ExitCode showOutbox(const InspectOptions& options, const PlayRegistry& registry, CommandOutput& output) {
    const StateCopy state(inspectedFolder(options, registry));
    const auto inspection = OutboxAdjust::inspect(state.outbox());
    const auto copyError = state.faultOf("outbox");
    const auto& error = copyError.empty() ? inspection.fault : copyError;
    for (const auto& package : inspection.packages)
        output.show("package", toJSON(fieldsOf(package)), textLines(package));
    if (!error.empty())
        output.showError("outbox: " + error, nlohmann::ordered_json::object());
    else if (inspection.packages.empty())
        output.print("The outbox is empty.");
    return output.end();
}

} // namespace corvantile::tool
