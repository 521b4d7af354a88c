#include "CorvantilePlatform/Foundation/detail/UUID.hpp"

#include <cstddef>
#include <string_view>

namespace corvantile {

std::string uuidText(std::array<unsigned char, 16> randomBytes) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    randomBytes[6] = static_cast<unsigned char>((randomBytes[6] & 0x0F) | 0x40); // version: random
    randomBytes[8] = static_cast<unsigned char>((randomBytes[8] & 0x3F) | 0x80); // variant
    std::string text;
    for (std::size_t i = 0; i < randomBytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += hex[randomBytes[i] >> 4];
        text += hex[randomBytes[i] & 0x0F];
    }
    return text;
}

} // namespace corvantile
