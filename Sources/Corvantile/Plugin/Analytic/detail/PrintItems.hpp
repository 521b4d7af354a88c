#pragma once

#include <initializer_list>
#include <string_view>

namespace corvantile {

// Prints one line on the console: the items, empty ones too, with a blank between each two.
void printItems(std::initializer_list<std::string_view> items);

} // namespace corvantile
