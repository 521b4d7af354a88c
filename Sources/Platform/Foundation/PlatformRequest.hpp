#pragma once

#include "Platform/Export.hpp"

namespace corvantile {

// Something that was asked of the platform and is under way. Letting go of it cancels it: no completion
// begins after that on the queue it was meant for, and what the completion holds is released soon after.
// Letting go of one that has been answered does nothing. Threads: any.
class CORVANTILE_API PlatformRequest {
public:
    PlatformRequest() = default;
    PlatformRequest(const PlatformRequest&) = delete;
    PlatformRequest& operator=(const PlatformRequest&) = delete;
    virtual ~PlatformRequest();
};

} // namespace corvantile
