#include "CorvantilePlay/detail/Session/LifeCycle.hpp"

namespace corvantile::tool {

std::string_view describe(LifeCycle lifeCycle) {
    switch (lifeCycle) {
    case LifeCycle::notRunning: return "not running";
    case LifeCycle::inactive: return "inactive";
    case LifeCycle::active: return "active";
    case LifeCycle::background: return "in the background";
    }
    return {};
}

std::string_view nextCommands(LifeCycle lifeCycle) {
    switch (lifeCycle) {
    case LifeCycle::notRunning: return "launch starts it";
    case LifeCycle::inactive: return "activate or background come next";
    case LifeCycle::active: return "resign comes next";
    case LifeCycle::background: return "foreground comes next";
    }
    return {};
}

} // namespace corvantile::tool
