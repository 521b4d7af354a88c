#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// A sink: where the router takes events to. Known by identity, shared with the router.
// Threads: the caller's. The list of ignored names is not guarded: fill it before events flow.
class CORVANTILE_API AnalyticComponent : NonCopyable {
public:
    static constexpr std::string_view typeName = "AnalyticComponent";

    virtual ~AnalyticComponent();

    [[nodiscard]] virtual const std::vector<std::string>& ignoredEventNames() const = 0;
    // Adds to the list, in the order given; what is there already is added again.
    virtual void ignore(std::initializer_list<std::string_view> names) = 0;
    // Whether the event's whole name, letter for letter, is not on the list.
    [[nodiscard]] virtual bool shouldTrack(const AnalyticEvent& event) const;

    virtual void track(const AnalyticEvent& event) = 0;
    virtual void track(const AnalyticEvent& event, const NSDecimalNumber& with,
                       const std::string& currency) = 0;
    // A subscription purchase. Called whether or not the list has its name.
    virtual void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                              const std::string& transId, const std::optional<Date>& date,
                              const std::optional<std::string>& region) = 0;

    // The same with the store's receipt. Does nothing, in every sink: those that need the receipt read it
    // themselves.
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::vector<std::uint8_t>& receipt, const std::optional<Date>& date,
                      const std::optional<std::string>& region);
};

} // namespace corvantile
