#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <map>
#include <string>
#include <string_view>

namespace corvantile {

// Appends `name=value`, form-urlencoded, after an `&` where something stands before it. An empty value is
// left out.
void appendFormField(std::string& form, std::string_view name, std::string_view value);

// The fields of such a text, decoded; of a name that occurs twice, the first.
[[nodiscard]] CORVANTILE_API std::map<std::string, std::string, std::less<>>
formFields(std::string_view form);

// The value of one field, which stands after another one; empty when there is none.
[[nodiscard]] std::string formField(std::string_view form, std::string_view name);

} // namespace corvantile
