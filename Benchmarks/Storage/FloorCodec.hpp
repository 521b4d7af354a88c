#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <openssl/evp.h>

namespace corvantile {

// AES-128-CBC and base64 in lines, for texts of one size: the floor under the framework's codec. The key and
// the vector have 16 bytes.
class FloorCodec {
public:
    FloorCodec(std::string_view key, std::string iv) : iv_(std::move(iv)) {
        const auto* const cipher = EVP_aes_128_cbc();
        EVP_CipherInit_ex2(seal_, cipher, bytes(key.data()), nullptr, 1, nullptr);
        EVP_CipherInit_ex2(open_, cipher, bytes(key.data()), nullptr, 0, nullptr);
        values_.fill(64);
        for (unsigned char i = 0; i < 64; ++i) values_[static_cast<unsigned char>(alphabet[i])] = i;
    }
    FloorCodec(const FloorCodec&) = delete;
    FloorCodec& operator=(const FloorCodec&) = delete;
    ~FloorCodec() {
        EVP_CIPHER_CTX_free(seal_);
        EVP_CIPHER_CTX_free(open_);
    }

    std::string seal(std::string_view text) {
        const auto size = run(seal_, text.data(), text.size());
        std::string out((size + 2) / 3 * 4 + ((size + 2) / 3 * 4 - 1) / 64 * 2, '\0');
        char* to = out.data();
        std::size_t at = 0;
        for (std::size_t groups = 0; at + 3 <= size; at += 3, ++groups) {
            if (groups == 16) {
                *to++ = '\r';
                *to++ = '\n';
                groups = 0;
            }
            const unsigned bits = buffer_[at] * 65536U + buffer_[at + 1] * 256U + buffer_[at + 2];
            for (int shift = 18; shift >= 0; shift -= 6) *to++ = alphabet[bits >> shift & 63U];
        }
        if (at < size) {
            const unsigned bits = buffer_[at] * 65536U + (at + 1 < size ? buffer_[at + 1] * 256U : 0U);
            *to++ = alphabet[bits >> 18];
            *to++ = alphabet[bits >> 12 & 63U];
            *to++ = at + 1 < size ? alphabet[bits >> 6 & 63U] : '=';
            *to++ = '=';
        }
        return out;
    }

    std::string open(std::string_view text) {
        std::array<char, 1024> sealed{};
        std::size_t size = 0;
        unsigned bits = 0;
        for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
            if (text[at] == '\r') at += 2;
            for (std::size_t i = 0; i < 4; ++i)
                bits = bits << 6 | (values_[static_cast<unsigned char>(text[at + i])] & 63U);
            sealed[size++] = static_cast<char>(bits >> 16);
            sealed[size++] = static_cast<char>(bits >> 8);
            sealed[size++] = static_cast<char>(bits);
        }
        size -= static_cast<std::size_t>(std::count(text.end() - 2, text.end(), '='));
        const auto opened = run(open_, sealed.data(), size);
        return {reinterpret_cast<const char*>(buffer_.data()), opened};
    }

private:
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    static const unsigned char* bytes(const char* text) {
        return reinterpret_cast<const unsigned char*>(text);
    }

    std::size_t run(EVP_CIPHER_CTX* context, const char* text, std::size_t size) {
        int written = 0;
        int rest = 0;
        EVP_CipherInit_ex2(context, nullptr, nullptr, bytes(iv_.data()), -1, nullptr);
        EVP_CipherUpdate(context, buffer_.data(), &written, bytes(text), static_cast<int>(size));
        EVP_CipherFinal_ex(context, buffer_.data() + written, &rest);
        return static_cast<std::size_t>(written + rest);
    }

    const std::string iv_;
    EVP_CIPHER_CTX* const seal_ = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX* const open_ = EVP_CIPHER_CTX_new();
    std::array<unsigned char, 256> values_{};
    std::array<unsigned char, 1024> buffer_{};
};

} // namespace corvantile
