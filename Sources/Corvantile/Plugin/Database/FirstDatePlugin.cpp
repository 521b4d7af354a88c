#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"

#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Analytic/DefaultEvent.hpp"
#include "Corvantile/RequireService.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

namespace corvantile {

namespace {

constexpr std::string_view account = "firstDate";
constexpr std::string_view entry = "firstDate";

Console& console() { return *Platform::current().ports().console; }

// The entry counts only as a whole: a value of another kind beside the date, and it is not ours.
std::optional<Date> storedDate() {
    const auto stored = Locksmith::loadDataForUserAccount(account);
    if (!stored) return std::nullopt;
    const auto isDate = [](const auto& member) { return member.second.template as<Date>() != nullptr; };
    const auto found = stored->find(entry);
    if (found == stored->end() || !std::all_of(stored->begin(), stored->end(), isDate)) return std::nullopt;
    return *found->second.as<Date>();
}

Date midnightBefore(Date date) {
    constexpr double secondsADay = 86400;
    return Date::fromUnixSeconds(std::floor(date.secondsSinceUnixEpoch() / secondsADay) * secondsADay);
}

KeychainDictionary entryFor(Date date) { return {{std::string(entry), date}}; }

} // namespace

FirstDateProtocol::~FirstDateProtocol() = default;
FirstDatePluggable::~FirstDatePluggable() = default;
FirstDatePlugin::FirstDatePlugin() = default;
FirstDatePlugin::~FirstDatePlugin() { disposable_.disposeAndClear(); }

void FirstDatePlugin::didBecomeActive(UIApplication&) { recordTime(); }
void FirstDatePlugin::willResignActive(UIApplication&) { disposable_.disposeAndClear(); }

void FirstDatePlugin::recordTime() {
    const auto analytics = requireService<AnalyticPluggable>();
    if (publishStored()) return;
    const auto date = midnightBefore(Platform::current().ports().clock->now());
    try {
        save(date);
    } catch (...) {
        report(*analytics, std::current_exception());
    }
}

bool FirstDatePlugin::publishStored() {
    const auto stored = storedDate();
    if (!stored) return false;
    firstDateSubject_.onNext(*stored);
    console().debugPrint("First time install had been loaded (" + isoTimestamp(*stored) + ").");
    return true;
}

// Refused because an entry is there: the keychain may have opened since it was read, so it is read once more;
// an entry that still cannot be read makes way.
void FirstDatePlugin::save(Date date) {
    try {
        Locksmith::saveData(entryFor(date), account);
    } catch (const NSError& refusal) {
        if (!isKeychainError(refusal, KeychainStatus::duplicateItem)) throw;
        if (publishStored()) return;
        Locksmith::updateData(entryFor(date), account);
    }
    firstDateSubject_.onNext(date);
    console().debugPrint("First time install had been recorded at: " + isoTimestamp(date));
}

void FirstDatePlugin::report(AnalyticPluggable& analytics, const std::exception_ptr& error) {
    console().print(describe(error)); // an error's debug form has no quotes around it
    analytics.track(DefaultEvent::locksmithCreateFirstdate(error).event());
}

} // namespace corvantile
