#include "Corvantile/Plugin/Analytic/detail/PrettyJSON.hpp"

#include "Corvantile/Extension/Encodable.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"

#include <cmath>
#include <string_view>
#include <utility>

namespace corvantile {

namespace {

// Appends to one text; every `write` returns whether JSON can hold the value.
class Writer {
public:
    bool write(const EventValue& value) {
        return std::visit([this](const auto& known) { return write(known); }, value.variant());
    }

    bool write(const EventValue::Map& map) {
        return writeMembers('{', map, '}', [this](const auto& member) {
            if (!write(member.first)) return false;
            text_ += " : ";
            return write(member.second);
        });
    }

    [[nodiscard]] std::string take() { return std::move(text_); }

private:
    bool write(EventValue::Null) { return append("null"); }
    bool write(bool value) { return append(value ? "true" : "false"); }
    bool write(std::int64_t value) { return append(std::to_string(value)); }
    bool write(const NSDecimalNumber& value) { return append(value.description()); }
    bool write(Date) { return false; }
    bool write(const OpaqueObject&) { return false; }

    bool write(double value) {
        if (!std::isfinite(value)) return false;
        const auto text = detail::realText(value);
        const bool isWhole = text.ends_with(".0");
        return append(std::string_view(text).substr(0, text.size() - (isWhole ? 2 : 0)));
    }

    bool write(const std::string& value) {
        if (!isUtf8(value)) return false;
        text_ += '"';
        for (const char character : value) escape(character);
        text_ += '"';
        return true;
    }

    bool write(const EventValue::List& list) {
        return writeMembers('[', list, ']', [this](const EventValue& member) { return write(member); });
    }

    template <class Members, class WriteMember>
    bool writeMembers(char open, const Members& members, char close, WriteMember writeMember) {
        text_ += open;
        ++level_;
        const char* separator = "";
        for (const auto& member : members) {
            text_ += separator;
            startLine();
            if (!writeMember(member)) return false;
            separator = ",";
        }
        --level_;
        if (members.empty()) text_ += '\n';
        startLine();
        text_ += close;
        return true;
    }

    bool append(std::string_view text) {
        text_ += text;
        return true;
    }

    void startLine() { text_.append("\n").append(2 * level_, ' '); }

    void escape(char character) {
        switch (character) {
        case '"': text_ += "\\\""; return;
        case '\\': text_ += "\\\\"; return;
        case '/': text_ += "\\/"; return;
        case '\b': text_ += "\\b"; return;
        case '\f': text_ += "\\f"; return;
        case '\n': text_ += "\\n"; return;
        case '\r': text_ += "\\r"; return;
        case '\t': text_ += "\\t"; return;
        }
        const auto code = static_cast<unsigned char>(character);
        if (code >= 0x20)
            text_ += character;
        else
            text_.append("\\u00").append(1, hex(code >> 4)).append(1, hex(code & 0xF));
    }

    static char hex(unsigned digit) { return "0123456789abcdef"[digit]; }

    std::string text_;
    std::size_t level_ = 0;
};

} // namespace

std::optional<std::string> prettyJSON(const EventValue::Map& object) {
    Writer writer;
    if (!writer.write(object)) return std::nullopt;
    return writer.take();
}

} // namespace corvantile
