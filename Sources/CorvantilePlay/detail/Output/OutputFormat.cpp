#include "CorvantilePlay/detail/Output/OutputFormat.hpp"

namespace corvantile::tool {

OutputFormat::~OutputFormat() = default;

} // namespace corvantile::tool
