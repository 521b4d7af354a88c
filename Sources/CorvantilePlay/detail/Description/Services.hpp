#pragma once

namespace corvantile {
class PlayConfiguration;
} // namespace corvantile

namespace corvantile::tool {

struct AppDescription;

// Reads what the top of a description says of the services that the app talks to.
void readServices(const PlayConfiguration& top, AppDescription& app);

} // namespace corvantile::tool
