#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

namespace corvantile {

class OpenSSLRandom final : public SecureRandom {
public:
    OpenSSLRandom();
    ~OpenSSLRandom() override;

    bool copyBytes(unsigned char* bytes, std::size_t count) override;
};

} // namespace corvantile
