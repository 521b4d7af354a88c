#include "Platform/Security/Cryptor.hpp"
#include "Platform/Security/SecureRandom.hpp"

namespace corvantile {

Cryptor::~Cryptor() = default;
SecureRandom::~SecureRandom() = default;

} // namespace corvantile
