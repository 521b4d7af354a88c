#pragma once

#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantileReactive/DisposableSlot.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <exception>

namespace corvantile {

class AnalyticPluggable;

// Records in the keychain, once per device, the day on which the app was first run, and publishes it at every
// activation. What cannot be read counts as absent: today then takes its place. Needs an AnalyticPluggable
// among the host's plug-ins: activating without one is fatal, even when the date is known.
class CORVANTILE_API FirstDatePlugin final : public FirstDatePluggable {
public:
    FirstDatePlugin();
    ~FirstDatePlugin() override;

    void didBecomeActive(UIApplication& application) override;
    void willResignActive(UIApplication& application) override;

    [[nodiscard]] rx::Observable<Date> firstDate() override { return firstDateSubject_.asObservable(); }

private:
    void recordTime();
    [[nodiscard]] bool publishStored();
    void save(Date date);
    void report(AnalyticPluggable& analytics, const std::exception_ptr& error);

    rx::DisposableSlot disposable_; // nothing fills it yet
    const rx::ReplaySubject<Date> firstDateSubject_ = rx::ReplaySubject<Date>::create(1);
};

} // namespace corvantile
