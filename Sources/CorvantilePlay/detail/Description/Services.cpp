#include "CorvantilePlay/detail/Description/AppDescription.hpp"

#include "CorvantileDesktop/HTTP/HTTPRoutes.hpp"

#include <string>

namespace corvantile::tool {

namespace {

bool isRoute(const std::string& origin, const std::string& base) { return HTTPRoutes().set(origin, base); }

AdjustOptions readAttribution(const PlayConfiguration& object) {
    object.allow({"endpoint", "token", "offline"});
    AdjustOptions options{.endpoint = object.text("endpoint", ""),
                          .bearerToken = object.text("token", ""),
                          .isOffline = object.boolean("offline", false)};
    if (!options.endpoint.empty() && !isRoute("http://localhost", options.endpoint))
        object.fail("endpoint",
                    "expected an address such as https://host, but found \"" + options.endpoint + "\"");
    return options;
}

AdsOptions readAds(const PlayConfiguration& object) {
    object.allow({"token", "identifier"});
    AdsOptions options;
    if (object.has("token")) options.token = object.text("token");
    const auto withheld = options.advertisingIdentifier;
    options.advertisingIdentifier = object.text("identifier", withheld);
    // The ads services take what is no identifier for one that is withheld.
    const auto& given = options.advertisingIdentifier;
    if (given != withheld && LocalAds(options).advertisingIdentifier() == withheld)
        object.fail("identifier", "expected a UUID, but found \"" + given + "\"");
    return options;
}

DesktopStoreOptions readStore(const PlayConfiguration& object) {
    object.allow({"catalogue", "clockRate", "setsAppTime"});
    DesktopStoreOptions options{.clockRate = object.amount("clockRate"),
                                .setsAppTime = object.boolean("setsAppTime", true)};
    if (object.has("catalogue")) options.catalogue = object.folder() / object.text("catalogue");
    return options;
}

} // namespace

void readServices(const PlayConfiguration& top, AppDescription& app) {
    app.attribution = readAttribution(top.object("attribution"));
    app.ads = readAds(top.object("ads"));
    app.store = readStore(top.object("store"));
    app.httpRoutes = top.textsByName("httpRoutes");
    for (const auto& [origin, base] : app.httpRoutes)
        if (!isRoute(origin, base))
            top.fail("httpRoutes", "no route can lead from \"" + origin + "\" to \"" + base +
                                       "\": expected \"https://host\": \"http://127.0.0.1:1234\"");
    app.hasServer = top.boolean("server", false);
    app.promoteInstall = top.text("promoteInstall", "");
}

} // namespace corvantile::tool
