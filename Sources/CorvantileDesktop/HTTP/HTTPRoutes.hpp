#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace corvantile {

// Sends requests to another server than their URL names, for a test or a fake server. Threads: any.
class CORVANTILE_API HTTPRoutes : NonCopyable {
public:
    // From now on requests to exactly this origin ("https://host", with a port that is not the scheme's own)
    // go to `base` ("http://127.0.0.1:1234", perhaps with a path), which their path and query follow. False,
    // and nothing changes, when either could be none.
    [[nodiscard]] bool set(std::string_view origin, std::string_view base);
    void remove(std::string_view origin);

    // Where a request to `url` goes: `url` itself when no route leads elsewhere.
    [[nodiscard]] std::string destination(std::string_view url) const;

private:
    mutable std::mutex mutex_;
    std::map<std::string, std::string> bases_; // by origin
};

} // namespace corvantile
