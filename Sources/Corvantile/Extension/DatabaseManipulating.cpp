#include "Corvantile/Extension/DatabaseManipulating.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

namespace corvantile {

DatabaseCryptor::~DatabaseCryptor() = default;
DatabaseManipulating::~DatabaseManipulating() = default;

void DatabaseManipulating::throwTypeError() {
    throw NSError("sdad", 1, {{NSError::localizedDescriptionKey, "error type"}});
}

} // namespace corvantile
