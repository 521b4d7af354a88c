#pragma once

#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlay/detail/Proof/WriteSteps.hpp"

#include <memory>

namespace corvantile::tool {

// Lets keychain, user defaults and attribution SDK pass `steps` with each thing that they write.
void stepThrough(Ports& ports, const std::shared_ptr<WriteSteps>& steps);

// Makes the app's timers fire so many times as early. What the app waits for by design, a second after each
// launch above all, teaches nothing about what a kill loses.
void speedUpTimers(Ports& ports, int times);

} // namespace corvantile::tool
