#pragma once

#include "Platform/Export.hpp"
#include "Reactive/Disposable.hpp"

#include <cstdint>
#include <mutex>
#include <optional>

namespace corvantile {

// Holds the handle of the one request that may be under way.
//
// A watch begins requests by itself, on a background queue, while main begins and ends watches. Whoever acts
// for a watch names it and gets nowhere once that is no longer the current one: it can then neither cancel
// the request of a later watch nor leave one running that nobody knows. Threads: any. The slot's own end
// disposes nothing.
class CORVANTILE_API RequestSlot {
public:
    using Watch = std::uint64_t;

    RequestSlot() = default;
    RequestSlot(const RequestSlot&) = delete;
    RequestSlot& operator=(const RequestSlot&) = delete;
    ~RequestSlot();

    // A new watch, the current one from now on.
    [[nodiscard]] Watch beginWatch();
    // No watch is the current one.
    void endWatch();

    // Disposes of what is kept and keeps nothing. False, and nothing done, for a watch that is over.
    bool disposeAndClear(std::optional<Watch> watch = std::nullopt);
    // Keeps the request and disposes of one that came in between; of the request itself for a watch that is
    // over.
    void keep(rx::Disposable request, std::optional<Watch> watch = std::nullopt);

private:
    [[nodiscard]] bool isOver(std::optional<Watch> watch) const { return watch && watch != current_; }

    std::mutex mutex_;
    Watch last_ = 0;
    std::optional<Watch> current_;
    rx::Disposable request_;
};

} // namespace corvantile
