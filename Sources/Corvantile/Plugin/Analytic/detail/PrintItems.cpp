#include "Corvantile/Plugin/Analytic/detail/PrintItems.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <string>

namespace corvantile {

void printItems(std::initializer_list<std::string_view> items) {
    std::string line;
    for (const auto item : items) line.append(item).append(" ");
    if (!line.empty()) line.pop_back();
    Platform::current().ports().console->print(line);
}

} // namespace corvantile
