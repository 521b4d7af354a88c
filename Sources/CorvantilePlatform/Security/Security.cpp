#include "CorvantilePlatform/Security/Cryptor.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

namespace corvantile {

Cryptor::~Cryptor() = default;
SecureRandom::~SecureRandom() = default;

} // namespace corvantile
