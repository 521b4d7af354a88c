#include "CorvantileDesktop/detail/Application/HostApplication.hpp"

#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"

namespace corvantile {

// Swapped, so that the former delegate ends when the new one is already in place.
void HostApplication::setDelegate(std::shared_ptr<UIApplicationDelegate> delegate) {
    delegate_.swap(delegate);
}

} // namespace corvantile
