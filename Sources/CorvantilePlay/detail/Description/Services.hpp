#pragma once

namespace corvantile::tool {

class DescriptionObject;
struct AppDescription;

// Reads what the top of a description says of the services that the app talks to.
void readServices(const DescriptionObject& top, AppDescription& app);

} // namespace corvantile::tool
