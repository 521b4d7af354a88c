#include "Corvantile/Plugin/AdNetwork/AdNetworkPluggable.hpp"

#include "Corvantile/Config/PromoteInstall.hpp"
#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Commands/Latest.hpp"
#include "CorvantilePlay/detail/Kinds/Kinds.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/PackageText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace corvantile::tool {

namespace {

// The same for programs.
EventValue::Map promotionFields(const PromoteInstall& promotion) {
    return {{"isEnabled", promotion.isEnabled()},
            {"threshold", promotion.threshold()},
            {"appID", promotion.appID()},
            {"appName", promotion.appName()},
            {"messageTitle", promotion.messageTitle()},
            {"messageBody", promotion.messageBody()},
            {"noButtonTitle", promotion.noButtonTitle()},
            {"yesButtonTitle", promotion.yesButtonTitle()}};
}

// As a host shows it that finds it enabled, once its count has come that far.
std::string describePromotion(const PromoteInstall& promotion) {
    return std::string(promotion.isEnabled() ? "asks at " : "is switched off; would ask at ") +
           std::to_string(promotion.threshold()) + ": \"" + promotion.messageTitle() + "\" \"" +
           promotion.messageBody() + "\" [" + promotion.noButtonTitle() + "] [" + promotion.yesButtonTitle() +
           "], for " + promotion.appName() + " (" + promotion.appID() + ")";
}

constexpr std::string_view sampleToken = "c2FtcGxlLWFkcy10b2tlbg==";

std::vector<std::uint8_t> parseHex(const std::string& text) {
    std::vector<std::uint8_t> bytes(text.size() / 2);
    bool isHex = !text.empty() && text.size() % 2 == 0;
    for (std::size_t i = 0; isHex && i < bytes.size(); ++i) {
        const auto* const digits = text.data() + 2 * i;
        isHex = std::from_chars(digits, digits + 2, bytes[i], 16).ptr == digits + 2;
    }
    if (!isHex) throw unexpectedValue("bytes in hex, such as 0a1b2c", text);
    return bytes;
}

void runPushToken(Host& host, Arguments given) {
    auto& process = host.process();
    const auto token = parseHex(given[0].text);
    process.delegate().didRegisterForRemoteNotificationsWithDeviceToken(process.application(), token);
    host.reporter().report("host", "push-token",
                           "didRegisterForRemoteNotifications with a token of " +
                               std::to_string(token.size()) + " bytes",
                           {{"token", given[0].text}});
}

void runOutbox(Host& host) {
    const auto packages = host.process().platform().adjust().packages();
    if (packages.empty()) host.reporter().report("host", "package", "the outbox is empty");
    for (const auto& package : packages)
        host.reporter().report("host", "package", describe(package), fieldsOf(package));
}

// Packages that wait, and how often they have been tried in vain.
struct Backlog {
    std::size_t packages = 0;
    int tries = 0;
};

Backlog backlogOf(const OutboxAdjust& adjust) {
    Backlog backlog;
    for (const auto& package : adjust.packages()) {
        if (package.state != PackageState::waiting) continue;
        ++backlog.packages;
        backlog.tries += package.tries;
    }
    return backlog;
}

void runDeliver(Host& host) {
    constexpr std::chrono::seconds timeout{10};
    constexpr std::chrono::milliseconds reportsFollow{100}; // the delegate is called just after the outbox
    const auto& adjust = host.process().platform().adjust();
    const auto before = backlogOf(adjust);
    if (withEnvironment(host.device().attribution).endpoint.empty())
        throw UsageError("there is no endpoint, so nothing leaves: play --server, or see Docs/Tool.md");
    if (!adjust.isOnline()) throw UsageError("the app is offline, so nothing leaves: online comes first");
    auto now = before;
    host.runLoop(
        [&] {
            now = backlogOf(adjust);
            return now.packages == 0 || now.tries > before.tries;
        },
        timeout);
    host.runLoop([] { return false; }, reportsFollow);
    host.reporter().report("host", "deliver",
                           now.packages == 0 ? "nothing waits in the outbox any more"
                                             : "still waiting in the outbox: " + std::to_string(now.packages),
                           {{"waiting", now.packages}});
}

void setAds(Host& host, const AdsOptions& ads, const std::string& effect) {
    host.setAds(ads);
    host.reporter().report("host", "ads", "from the next launch on, " + effect);
}

void runAds(Host& host, Arguments given) {
    const auto& what = given[0].text;
    if (given.size() > 1 && what != "token") throw UsageError("ads " + what + " wants nothing more");
    auto ads = host.device().ads;
    if (what == "slow") {
        ads.delay = LocalAds::longestDelay;
        return setAds(host, ads, "the ads services take a second to answer");
    }
    ads.delay = {};
    ads.token.reset();
    if (what == "token") {
        ads.token = given.size() > 1 ? given[1].text : sampleToken;
        return setAds(host, ads, "whoever asks for an attribution token gets " + *ads.token);
    }
    ads.failure =
        what == "none" ? AAAttributionFailure::platformNotSupported : AAAttributionFailure::internalError;
    if (what == "none") return setAds(host, ads, "this device has no attribution service");
    if (what == "error") return setAds(host, ads, "the attribution service fails");
    throw UsageError(unknownName("answer of the ads services", what, {"token", "none", "slow", "error"}));
}

void runAttribution(Host& host) {
    constexpr std::chrono::seconds timeout{8}; // a launch waits seven for the server
    const auto info = host.service<AdNetworkPluggable>()->info();
    host.runLoop([&info] { return latest(info).has_value(); }, timeout);
    const auto learnt = latest(info);
    if (!learnt) return host.reporter().report("host", "attribution", "nothing is published yet");
    auto [text, value] = publicationOf(*learnt);
    host.reporter().report("host", "attribution", "this launch has learnt " + text, {{"value", value}});
}

void runIdentifier(Host& host) {
    const auto identifier = host.service<AdNetworkPluggable>()->idfa();
    host.reporter().report("host", "idfa", "the advertising identifier is " + identifier,
                           {{"identifier", identifier}});
}

void runPromoteInstall(Host& host) {
    static_cast<void>(host.process());
    const auto& name = host.app().promoteInstall;
    if (name.empty()) throw UsageError("app.json names no promoteInstall, a JSON file without its ending");
    try {
        const auto json = NSBundle::main()->resource(name, "json");
        if (!json) throw UsageError("the app's folder has no " + name + ".json");
        const auto promotion = decodeJSON<PromoteInstall>(*json);
        host.reporter().report("host", "promote-install", describePromotion(promotion),
                               {{"record", promotionFields(promotion)}});
    } catch (const NSError& error) {
        throw UsageError(name + ".json: " + error.localizedDescription());
    }
}

} // namespace

std::vector<Command> attributionCommands(Host& host) {
    return {
        {"push-token", "HEX", "hand the app its push token, as bytes in hex",
         [&host](Arguments given) { runPushToken(host, given); }},
        {"outbox", "", "show the packages for the attribution service, and what became of them",
         [&host](Arguments) { runOutbox(host); }},
        {"deliver",
         "",
         "let the app go on until its packages are delivered, or one cannot be",
         [&host](Arguments) { runDeliver(host); },
         {"After a failure the SDK waits, minutes and more; offline and online end the wait."}},
        {"online", "", "let packages leave for the attribution service",
         [&host](Arguments) { host.setOnline(true); }},
        {"offline", "", "keep packages in the outbox", [&host](Arguments) { host.setOnline(false); }},
        {"ads",
         "token|none|slow|error [TEXT]",
         "say what an app that launches gets from the ads services",
         [&host](Arguments given) { runAds(host, given); },
         {"ads token lets it get an attribution token, of that TEXT if one is given; none is a device "
          "without",
          "the service. It lasts until the end of the play."}},
        {"attribution", "", "show what this launch has learnt of the search-ads campaign",
         [&host](Arguments) { runAttribution(host); }},
        {"idfa", "", "show the advertising identifier", [&host](Arguments) { runIdentifier(host); }},
        {"promote-install", "", "show the invitation to install another app, from the app's folder",
         [&host](Arguments) { runPromoteInstall(host); }},
    };
}

} // namespace corvantile::tool
