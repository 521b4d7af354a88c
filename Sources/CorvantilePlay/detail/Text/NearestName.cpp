#include "CorvantilePlay/detail/Text/NearestName.hpp"

#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <algorithm>
#include <cstddef>

namespace corvantile::tool {

namespace {

// What is longer is no misspelt name, and comparing takes as long as text times name.
constexpr std::size_t longestName = 200;

char lowered(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; }

bool isSame(char left, char right) { return lowered(left) == lowered(right); }

bool isBeginning(std::string_view text, std::string_view name) {
    return text.size() > 1 && text.size() < name.size() &&
           std::equal(text.begin(), text.end(), name.begin(), isSame);
}

std::size_t distance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> beforeLast(right.size() + 1), last(right.size() + 1), row(right.size() + 1);
    for (std::size_t j = 0; j <= right.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t change = isSame(left[i - 1], right[j - 1]) ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
            const bool isSwap =
                i > 1 && j > 1 && isSame(left[i - 1], right[j - 2]) && isSame(left[i - 2], right[j - 1]);
            if (isSwap) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row[right.size()];
}

} // namespace

std::string nearestName(std::string_view text, const Names& names) {
    std::string nearest;
    if (text.size() > longestName) return nearest;
    auto least = std::max<std::size_t>(text.size() / 3, 1) + 1; // more than that is another word
    for (const auto& name : names) {
        const auto away = isBeginning(text, name) ? 1 : distance(text, name);
        if (away >= least || away >= name.size()) continue;
        least = away;
        nearest = name;
    }
    return nearest;
}

std::string unknownName(std::string_view what, std::string_view text, const Names& names) {
    const auto nearest = nearestName(text, names);
    return "there is no " + std::string(what) + " \"" + shortened(text) + "\"; known: " + listed(names) +
           (nearest.empty() ? "" : "; did you mean " + nearest + "?");
}

std::string listed(const Names& names) {
    std::string list;
    for (const auto& name : names) list.append(list.empty() ? "" : ", ").append(name);
    return list.empty() ? "none" : list;
}

} // namespace corvantile::tool
