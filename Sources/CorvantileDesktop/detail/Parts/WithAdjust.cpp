#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/detail/DesktopParts.hpp"

namespace corvantile {

OutboxAdjust& DesktopPlatform::adjust() const { return *parts_->adjust; }

void DesktopPlatform::Parts::addAdjust(Ports& made, const DesktopOptions& options) {
    adjust = std::make_shared<OutboxAdjust>(inState(options, "outbox.sqlite"), options.adjust, made);
    made.adjust = adjust;
}

} // namespace corvantile
