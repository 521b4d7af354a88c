#include "CorvantilePlatform/Foundation/NSBundle.hpp"

#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

NSBundle::~NSBundle() = default;

std::shared_ptr<NSBundle> NSBundle::main() { return Platform::current().ports().mainBundle; }

} // namespace corvantile
