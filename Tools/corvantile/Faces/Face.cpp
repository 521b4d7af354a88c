#include "Tools/corvantile/Faces/Face.hpp"

namespace corvantile::tool {

Face::~Face() = default;

} // namespace corvantile::tool
