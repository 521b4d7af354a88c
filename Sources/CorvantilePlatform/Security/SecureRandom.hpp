#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstddef>

namespace corvantile {

// The platform's source of unpredictable random bytes. Threads: any.
class CORVANTILE_API SecureRandom : NonCopyable {
public:
    virtual ~SecureRandom();

    // Fills the buffer; false when no random bytes can be had, and the buffer is then as it was. Callers that
    // go on with what was in the buffer may ignore the result.
    virtual bool copyBytes(unsigned char* bytes, std::size_t count) = 0;
};

} // namespace corvantile
