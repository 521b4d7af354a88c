#include "CorvantileDesktop/Keychain/detail/DictionaryCoding.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace corvantile {

namespace {

constexpr char layout = 1;

class Writer {
public:
    explicit Writer(std::string& out) : out_(out) {}

    void number(std::uint64_t value) {
        for (int shift = 0; shift < 64; shift += 8) out_ += static_cast<char>(value >> shift & 0xFF);
    }
    template <class Bytes>
    void block(const Bytes& bytes) {
        number(bytes.size());
        out_.append(bytes.begin(), bytes.end());
    }

    void operator()(const std::string& text) { out_ += 't', block(text); }
    void operator()(bool boolean) { out_ += 'b', number(boolean ? 1 : 0); }
    void operator()(std::int64_t integer) { out_ += 'i', number(static_cast<std::uint64_t>(integer)); }
    void operator()(double real) { out_ += 'r', number(std::bit_cast<std::uint64_t>(real)); }
    void operator()(Date date) {
        out_ += 'd', number(std::bit_cast<std::uint64_t>(date.secondsSinceReference));
    }
    void operator()(const KeychainData& data) { out_ += 'x', block(data); }

private:
    std::string& out_;
};

class Reader {
public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }

    std::optional<char> byte() {
        if (rest_.empty()) return std::nullopt;
        const char value = rest_.front();
        rest_.remove_prefix(1);
        return value;
    }
    std::optional<std::uint64_t> number() {
        if (rest_.size() < sizeof(std::uint64_t)) return std::nullopt;
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof value; ++i)
            value |= static_cast<std::uint64_t>(static_cast<unsigned char>(rest_[i])) << 8 * i;
        rest_.remove_prefix(sizeof value);
        return value;
    }
    std::optional<std::string_view> block() {
        const auto size = number();
        if (!size || *size > rest_.size()) return std::nullopt;
        const auto bytes = rest_.substr(0, static_cast<std::size_t>(*size));
        rest_.remove_prefix(bytes.size());
        return bytes;
    }
    std::optional<KeychainValue> value() {
        const auto kind = byte();
        if (!kind) return std::nullopt;
        return *kind == 't' || *kind == 'x' ? longValue(*kind) : shortValue(*kind);
    }

private:
    std::optional<KeychainValue> longValue(char kind) {
        const auto bytes = block();
        if (!bytes) return std::nullopt;
        if (kind == 't') return KeychainValue(*bytes);
        return KeychainValue(KeychainData(bytes->begin(), bytes->end()));
    }
    std::optional<KeychainValue> shortValue(char kind) {
        const auto bits = number();
        if (!bits) return std::nullopt;
        switch (kind) {
        case 'b': return *bits <= 1 ? std::optional<KeychainValue>(*bits == 1) : std::nullopt;
        case 'i': return KeychainValue(static_cast<std::int64_t>(*bits));
        case 'r': return KeychainValue(std::bit_cast<double>(*bits));
        case 'd': return KeychainValue(Date{std::bit_cast<double>(*bits)});
        }
        return std::nullopt;
    }

    std::string_view rest_;
};

} // namespace

static_assert(std::numeric_limits<double>::is_iec559 && sizeof(double) == sizeof(std::uint64_t));

std::string encodeDictionary(const KeychainDictionary& dictionary) {
    std::string bytes(1, layout);
    Writer writer(bytes);
    for (const auto& [key, value] : dictionary) {
        writer.block(key);
        std::visit(writer, value.variant());
    }
    return bytes;
}

std::optional<KeychainDictionary> decodeDictionary(std::string_view bytes) {
    Reader reader(bytes);
    if (reader.byte() != layout) return std::nullopt;
    KeychainDictionary dictionary;
    while (!reader.atEnd()) {
        const auto key = reader.block();
        auto value = key ? reader.value() : std::nullopt;
        if (!value || !dictionary.emplace(*key, std::move(*value)).second) return std::nullopt;
    }
    return dictionary;
}

} // namespace corvantile
