#include "CorvantilePlay/detail/Proof/WriteSteps.hpp"

#include <csignal>

namespace corvantile::tool {

// By name and not by place: threads take turns as they like.
std::string WriteSteps::numbered(const std::string& what) {
    const std::lock_guard lock(mutex_);
    const int number = ++counts_[what];
    return number == 1 ? what : what + " (" + std::to_string(number) + ")";
}

void WriteSteps::pass(const std::string& moment) const {
    if (moment == fatal_) static_cast<void>(::raise(SIGKILL));
    if (tell_) tell_(moment);
}

} // namespace corvantile::tool
