#include "CorvantileDesktop/Adjust/detail/PackageIdentifiers.hpp"

#include "CorvantilePlatform/Foundation/detail/UUID.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

PackageIdentifiers::PackageIdentifiers(std::shared_ptr<SecureRandom> random) : random_(std::move(random)) {}

std::string PackageIdentifiers::next() {
    if (used_ == count) {
        random_->copyBytes(bytes_.data(), bytes_.size());
        used_ = 0;
    }
    std::array<unsigned char, size> one{};
    std::copy_n(bytes_.data() + used_++ * size, size, one.data());
    return uuidText(one);
}

} // namespace corvantile
