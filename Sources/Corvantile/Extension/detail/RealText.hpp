#pragma once

#include <string>

namespace corvantile {

// The shortest text that reads back as the same double, whatever the locale: `4.99`, `1.0`, `1e-05`, `inf`,
// `nan`.
[[nodiscard]] std::string realText(double value);

} // namespace corvantile
