#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

DispatchQueue::~DispatchQueue() = default;
DispatchQueues::~DispatchQueues() = default;

std::shared_ptr<DispatchQueue> DispatchQueue::main() { return Platform::current().ports().queues->main(); }

} // namespace corvantile
