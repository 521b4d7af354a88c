#include "CorvantileReactive/DisposedError.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

namespace corvantile::rx {

std::exception_ptr disposedError() {
    static const auto error = std::make_exception_ptr(
        NSError("corvantile.rx", 1, {{NSError::localizedDescriptionKey, "Object was disposed."}}));
    return error;
}

} // namespace corvantile::rx
