#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <string>

namespace corvantile {

// The domain of the errors; the code is an AAAttributionFailure.
inline constexpr const char* attributionErrorDomain = "AAAttributionErrorDomain";

enum class AAAttributionFailure : int { networkError = 1, internalError = 2, platformNotSupported = 3 };

// Where search-ads attribution tokens come from. Threads: any.
class CORVANTILE_API AAAttribution : NonCopyable {
public:
    virtual ~AAAttribution();

    // A token for one exchange, which may take a moment: a platform bounds how long it blocks. Throws
    // NSError.
    [[nodiscard]] virtual std::string token() = 0;

    // The same, of the installed platform.
    [[nodiscard]] static std::string attributionToken();
};

} // namespace corvantile
