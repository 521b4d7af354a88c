#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Network/NetworkReachabilityManager.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace corvantile {

TEST(HostName, IsANameOrAnAddressAndNothingAroundIt) {
    using namespace std::string_view_literals;
    DesktopPlatform platform;
    const std::string longest(253, 'a');
    const std::string tooLong(254, 'a');
    const struct {
        std::string_view host;
        bool accepted;
    } cases[] = {{"www.example.com", true},
                 {"my_host-2", true},
                 {"192.0.2.1", true},
                 {"2001:db8::1", true},
                 {longest, true},
                 {tooLong, false},
                 {"", false},
                 {"example.com:443", false},
                 {"https://example.com", false},
                 {"two words", false},
                 {"ex\xC3\xA4mple", false},
                 {"::1\0"sv, false},
                 {"line\n", false},
                 {"user@example.com", false},
                 {"[::1]", false}};
    for (const auto& [host, accepted] : cases) {
        SCOPED_TRACE(host);
        EXPECT_EQ(platform.ports().reachability->make(host) != nullptr, accepted);
    }
}

} // namespace corvantile
