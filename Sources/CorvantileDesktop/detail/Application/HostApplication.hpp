#pragma once

#include "CorvantilePlatform/Application/UIApplication.hpp"

#include <memory>

namespace corvantile {

// The app, which the host itself launches and feeds: it only keeps the delegate.
class HostApplication final : public UIApplication {
public:
    [[nodiscard]] std::shared_ptr<UIApplicationDelegate> delegate() const override { return delegate_; }
    void setDelegate(std::shared_ptr<UIApplicationDelegate> delegate) override;

private:
    std::shared_ptr<UIApplicationDelegate> delegate_;
};

} // namespace corvantile
