#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Disposable.hpp"

#include <mutex>
#include <vector>

namespace corvantile::rx {

// Disposes of its content, in the order inserted, when it is destroyed, on the thread that drops it. Finished
// subscriptions stay in it until then. What is inserted while that happens is disposed of at once.
// Threads: `insert` from any. Declare it as its owner's last member.
class CORVANTILE_API DisposeBag : NonCopyable {
public:
    ~DisposeBag();

    void insert(Disposable disposable);

private:
    std::mutex mutex_;
    std::vector<Disposable> content_;
    bool isDisposed_ = false;
};

} // namespace corvantile::rx
