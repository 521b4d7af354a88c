#include "CorvantileReactive/DebugLabel.hpp"

namespace corvantile::rx {

std::string debugLabel(std::string_view file, int line, std::string_view function) {
    std::string label(file.substr(file.find_last_of('/') + 1));
    label.append(":").append(std::to_string(line)).append(" (").append(function).append(")");
    return label;
}

} // namespace corvantile::rx
