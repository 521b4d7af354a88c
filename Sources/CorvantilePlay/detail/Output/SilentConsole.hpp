#pragma once

#include "CorvantilePlatform/Foundation/Console.hpp"

#include <string_view>

namespace corvantile::tool {

class SilentConsole final : public Console {
public:
    void print(std::string_view) override {}
};

} // namespace corvantile::tool
