#include "Platform/Foundation/DispatchQueue.hpp"

#include "Platform/Platform.hpp"

namespace corvantile {

DispatchQueue::~DispatchQueue() = default;
DispatchQueues::~DispatchQueues() = default;

std::shared_ptr<DispatchQueue> DispatchQueue::main() { return Platform::current().ports().queues->main(); }

} // namespace corvantile
