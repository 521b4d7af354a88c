#include "CorvantilePlay/detail/Output/Face.hpp"

namespace corvantile::tool {

Face::~Face() = default;

} // namespace corvantile::tool
