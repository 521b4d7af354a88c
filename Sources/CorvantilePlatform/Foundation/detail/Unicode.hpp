#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <cstddef>
#include <string_view>

namespace corvantile {

// One Unicode scalar in UTF-8 text. A byte that begins no well-formed scalar counts as one, with `valid`
// false.
struct Scalar {
    char32_t value = 0;
    std::size_t length = 0; // bytes
    bool valid = false;
};

// The scalar at the beginning of `text`, which is not empty.
[[nodiscard]] CORVANTILE_API Scalar firstScalar(std::string_view text);

[[nodiscard]] CORVANTILE_API bool isUtf8(std::string_view text);

// Whether the scalar joins the one before it into one user-perceived character: combining marks, variation
// selectors, emoji modifiers and the zero-width joiner. The ranges are those met in practice, not all of
// them.
[[nodiscard]] CORVANTILE_API bool extendsCharacter(char32_t scalar);

// Where the user-perceived character that begins `text` ends. Unlike the full rule, flags count as two.
[[nodiscard]] CORVANTILE_API std::size_t firstCharacterLength(std::string_view text);

} // namespace corvantile
