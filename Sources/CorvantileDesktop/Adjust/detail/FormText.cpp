#include "CorvantileDesktop/Adjust/detail/FormText.hpp"

#include <array>
#include <charconv>
#include <cstddef>

namespace corvantile {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

constexpr auto standsForItself = [] {
    std::array<bool, 256> stands{};
    for (unsigned char c = '0'; c <= '9'; ++c) stands[c] = true;
    for (unsigned char c = 'A'; c <= 'Z'; ++c) stands[c] = true;
    for (unsigned char c = 'a'; c <= 'z'; ++c) stands[c] = true;
    for (const char c : {'-', '.', '_', '*'}) stands[static_cast<unsigned char>(c)] = true;
    return stands;
}();

void appendEncoded(std::string& form, std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (standsForItself[byte]) {
            form += c;
        } else if (c == ' ') {
            form += '+';
        } else {
            form += '%';
            form += hexDigits[byte >> 4U];
            form += hexDigits[byte & 15U];
        }
    }
}

std::string decoded(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const auto* const digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            plain += static_cast<char>(byte);
            i += 2;
        } else {
            plain += text[i] == '+' ? ' ' : text[i];
        }
    }
    return plain;
}

} // namespace

void appendFormField(std::string& form, std::string_view name, std::string_view value) {
    if (value.empty()) return;
    if (!form.empty()) form += '&';
    form += name;
    form += '=';
    appendEncoded(form, value);
}

std::map<std::string, std::string, std::less<>> formFields(std::string_view form) {
    std::map<std::string, std::string, std::less<>> fields;
    while (!form.empty()) {
        const auto field = form.substr(0, form.find('&'));
        form.remove_prefix(field.size() == form.size() ? field.size() : field.size() + 1);
        const auto equals = field.find('=');
        if (equals != std::string_view::npos)
            fields.emplace(decoded(field.substr(0, equals)), decoded(field.substr(equals + 1)));
    }
    return fields;
}

std::string formField(std::string_view form, std::string_view name) {
    const auto begin = form.find('&' + std::string(name) + '=');
    if (begin == std::string_view::npos) return {};
    const auto value = form.substr(begin + name.size() + 2);
    return decoded(value.substr(0, value.find('&')));
}

} // namespace corvantile
