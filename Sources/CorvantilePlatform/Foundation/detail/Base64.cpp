#include "CorvantilePlatform/Foundation/detail/Base64.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace corvantile {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t charactersPerLine = 64;
constexpr std::size_t bytesPerLine = charactersPerLine / 4 * 3;

// Six bits each; a character outside the alphabet is beyond them.
constexpr std::uint32_t foreign = 0x40;
constexpr auto makeSextets() {
    std::array<std::uint8_t, 256> sextets{};
    for (auto& sextet : sextets) sextet = foreign;
    for (std::uint8_t i = 0; i < 64; ++i) sextets[static_cast<std::uint8_t>(alphabet[i])] = i;
    return sextets;
}
constexpr auto sextets = makeSextets();

std::uint32_t sextet(char character) { return sextets[static_cast<std::uint8_t>(character)]; }
std::uint32_t byte(char character) { return static_cast<std::uint8_t>(character); }

constexpr std::size_t encodedSize(std::size_t bytes) { return (bytes + 2) / 3 * 4; }

char* encodeGroup(std::uint32_t bits, char* out) {
    out[0] = alphabet[bits >> 18 & 0x3F];
    out[1] = alphabet[bits >> 12 & 0x3F];
    out[2] = alphabet[bits >> 6 & 0x3F];
    out[3] = alphabet[bits & 0x3F];
    return out + 4;
}

// The end of what was written.
char* encode(const char* in, std::size_t size, char* out) {
    for (; size >= 3; in += 3, size -= 3)
        out = encodeGroup(byte(in[0]) << 16 | byte(in[1]) << 8 | byte(in[2]), out);
    if (size == 0) return out;
    out = encodeGroup(byte(in[0]) << 16 | (size == 2 ? byte(in[1]) << 8 : 0U), out);
    out[-1] = '=';
    if (size == 1) out[-2] = '=';
    return out;
}

char* decodeGroup(std::uint32_t bits, char* out) {
    out[0] = static_cast<char>(bits >> 16);
    out[1] = static_cast<char>(bits >> 8);
    out[2] = static_cast<char>(bits);
    return out + 3;
}

// Decodes text of any shape, group by group as long as nothing needs to be skipped, else character by
// character.
class Decoder {
public:
    explicit Decoder(std::string_view text)
        : in_(text.data()),
          end_(in_ + text.size()),
          bytes_(text.size() / 4 * 3 + 3, '\0'),
          out_(bytes_.data()) {}

    std::optional<std::string> run() {
        while (in_ != end_) {
            if (held_ == 0) takeWholeGroups();
            if (in_ != end_ && !takeCharacter(*in_++)) return std::nullopt;
        }
        if (!finishLastGroup()) return std::nullopt;
        bytes_.resize(static_cast<std::size_t>(out_ - bytes_.data()));
        return std::move(bytes_);
    }

private:
    void takeWholeGroups() {
        if (padding_ > 0) return;
        const char* in =
            in_; // in registers: what is written could be these members, for all the compiler knows
        char* out = out_;
        for (; end_ - in >= 4; in += 4) {
            const auto a = sextet(in[0]), b = sextet(in[1]), c = sextet(in[2]), d = sextet(in[3]);
            if (((a | b | c | d) & foreign) != 0) break;
            out = decodeGroup(a << 18 | b << 12 | c << 6 | d, out);
        }
        in_ = in;
        out_ = out;
    }

    bool takeCharacter(char character) {
        const auto value = sextet(character);
        if (character == '=') ++padding_;
        if (value == foreign) return true;
        if (padding_ > 0) return false;
        bits_ = bits_ << 6 | value;
        if (++held_ == 4) {
            out_ = decodeGroup(bits_, out_);
            held_ = 0;
        }
        return true;
    }

    bool finishLastGroup() {
        if (held_ == 0) return padding_ == 0;
        if (held_ == 1 || held_ + padding_ != 4) return false;
        out_ = decodeGroup(bits_ << 6 * padding_, out_) - padding_;
        return true;
    }

    const char* in_;
    const char* const end_;
    std::string bytes_;
    char* out_;
    std::uint32_t bits_ = 0;
    std::size_t held_ = 0; // sextets of a group that is not full
    std::size_t padding_ = 0;
};

} // namespace

std::string base64(std::string_view bytes) {
    std::string text(encodedSize(bytes.size()), '\0');
    encode(bytes.data(), bytes.size(), text.data());
    return text;
}

std::string base64Lines(std::string_view bytes) {
    const auto characters = encodedSize(bytes.size());
    const auto breaks = characters == 0 ? 0 : (characters - 1) / charactersPerLine;
    std::string text(characters + 2 * breaks, '\0');
    const char* in = bytes.data();
    char* out = text.data();
    for (std::size_t line = 0; line < breaks; ++line, in += bytesPerLine) {
        out = encode(in, bytesPerLine, out);
        *out++ = '\r';
        *out++ = '\n';
    }
    encode(in, bytes.size() - breaks * bytesPerLine, out);
    return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) { return Decoder(text).run(); }

} // namespace corvantile
