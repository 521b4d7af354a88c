#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "Tools/corvantile/CommandOutput.hpp"
#include "Tools/corvantile/Faces/VisibleText.hpp"
#include "Tools/corvantile/Inspect/Inspect.hpp"
#include "Tools/corvantile/Inspect/StateCopy.hpp"
#include "Tools/corvantile/JSONText.hpp"
#include "Tools/corvantile/PackageText.hpp"

#include <nlohmann/json.hpp>

#include <string>

namespace corvantile::tool {

namespace {

std::string textLines(const OutboxEntry& package) {
    return visibleText(describe(package.created) + "  " + package.identifier + "\n" + describe(package), 2);
}

} // namespace

ExitCode showOutbox(const InspectOptions& options, CommandOutput& output) {
    const StateCopy state(inspectedFolder(options));
    const auto inspection = OutboxAdjust::inspect(state.outbox());
    const auto copyError = state.faultOf("outbox");
    const auto& error = copyError.empty() ? inspection.fault : copyError;
    for (const auto& package : inspection.packages)
        output.show("package", toJSON(fieldsOf(package)), textLines(package));
    if (!error.empty())
        output.showError("outbox: " + error, nlohmann::ordered_json::object());
    else if (inspection.packages.empty())
        output.say("The outbox is empty.");
    return output.end();
}

} // namespace corvantile::tool
