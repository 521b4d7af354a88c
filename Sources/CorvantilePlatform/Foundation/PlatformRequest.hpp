#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <functional>
#include <memory>

namespace corvantile {

class DispatchQueue;

// Something that was asked of the platform and is under way. Letting go of it cancels it: no completion
// begins after that on the queue it was meant for, and what the completion holds is released soon after.
// Letting go of one that has been answered does nothing. Threads: any.
class CORVANTILE_API PlatformRequest : NonCopyable {
public:
    virtual ~PlatformRequest();
};

// Runs `answer` on the queue, later and once, unless the request that it returns is let go before.
[[nodiscard]] CORVANTILE_API std::shared_ptr<PlatformRequest> postAnswer(DispatchQueue& queue,
                                                                         std::function<void()> answer);

} // namespace corvantile
