#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Observable.hpp"

#include <memory>

namespace corvantile {

// Tells whether any of the streams tracked by it is at work.
//
// A tracked stream counts from just before each subscription to it until that subscription has ended,
// handlers included, or been disposed; one that is neither counts for ever. Changes are told on the main
// queue, as it finds things when it gets to them: work that stops and starts again within one turn is seen as
// unbroken. Threads: any. A platform must be installed when it is made.
class CORVANTILE_API ActivityIndicator final : NonCopyable {
public:
    ActivityIndicator();
    ~ActivityIndicator();

    // The state of the moment, inside `subscribe`, then each change. Never ends.
    [[nodiscard]] rx::Observable<bool> asObservable() const;

    template <class T>
    [[nodiscard]] rx::Observable<T> trackActivity(const rx::Observable<T>& source) const {
        return source.doOn({.onSubscribe = [activities = activities_] { begin(*activities); },
                            .onDispose = [activities = activities_] { end(*activities); }});
    }

private:
    class Activities;

    static void begin(Activities& activities);
    static void end(Activities& activities);

    const std::shared_ptr<Activities> activities_;
};

} // namespace corvantile
