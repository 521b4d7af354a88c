#include "CorvantilePlay/detail/Text/Words.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>
#include <optional>
#include <utility>

namespace corvantile::tool {

namespace {

constexpr std::string_view blanks = " \t\r";

class Scanner {
public:
    explicit Scanner(std::string_view line) : rest_(line) {}

    std::optional<Word> next() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
        if (rest_.empty() || rest_.front() == '#') return std::nullopt;
        word_ = {};
        while (!rest_.empty() && blanks.find(rest_.front()) == std::string_view::npos) {
            const char character = take();
            if ((character == '"' || character == '\'') && mayQuote()) {
                takeQuoted(character);
                continue;
            }
            if (character == '=') word_.equals = std::min(word_.equals, word_.text.size());
            word_.text += character;
        }
        return std::move(word_);
    }

private:
    [[nodiscard]] bool mayQuote() const { return word_.text.empty() || word_.text.back() == '='; }

    char take() {
        const char character = rest_.front();
        rest_.remove_prefix(1);
        return character;
    }

    void takeQuoted(char quote) {
        if (!word_.text.empty() && word_.text.size() - 1 == word_.equals) word_.isValueQuoted = true;
        while (!rest_.empty()) {
            const char character = take();
            if (character == quote) return;
            word_.text += character == '\\' && quote == '"' ? takeEscaped() : character;
        }
        throw UsageError(std::string("a quote is left open: expected ") + quote +
                         " before the end of the line");
    }

    // A backslash before anything else stands for itself.
    char takeEscaped() {
        static constexpr std::string_view escapes = "\"\\nt";
        static constexpr std::string_view meanings = "\"\\\n\t";
        const auto escape = rest_.empty() ? std::string_view::npos : escapes.find(rest_.front());
        if (escape == std::string_view::npos) return '\\';
        take();
        return meanings[escape];
    }

    std::string_view rest_;
    Word word_;
};

} // namespace

Words splitWords(std::string_view line) {
    Words words;
    Scanner scanner(line);
    while (auto word = scanner.next()) words.push_back(std::move(*word));
    return words;
}

} // namespace corvantile::tool
