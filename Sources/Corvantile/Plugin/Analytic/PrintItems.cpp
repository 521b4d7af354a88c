#include "Corvantile/Plugin/Analytic/PrintItems.hpp"

#include "Platform/Foundation/Console.hpp"
#include "Platform/Platform.hpp"

#include <string>

namespace corvantile {

void printItems(std::initializer_list<std::string_view> items) {
    std::string line;
    for (const auto item : items) line.append(item).append(" ");
    if (!line.empty()) line.pop_back();
    Platform::current().ports().console->print(line);
}

} // namespace corvantile
