#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace corvantile {

class SecureRandom;

// Random identifiers for packages. One request for random bytes serves many, since a request takes longer
// than all the rest of making a package. Threads: one at a time.
class PackageIdentifiers {
public:
    explicit PackageIdentifiers(std::shared_ptr<SecureRandom> random);

    [[nodiscard]] std::string next();

private:
    static constexpr std::size_t size = 16; // bytes of one
    static constexpr std::size_t count = 64;

    const std::shared_ptr<SecureRandom> random_;
    std::array<unsigned char, size * count> bytes_{};
    std::size_t used_ = count;
};

} // namespace corvantile
