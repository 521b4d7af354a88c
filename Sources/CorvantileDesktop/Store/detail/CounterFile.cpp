#include "CorvantileDesktop/Store/detail/CounterFile.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <sstream>
#include <string>
#include <utility>

namespace corvantile {

namespace {

using Counters = StoreStorage::Counters;

constexpr std::int64_t ahead = 1000;
constexpr std::time_t startOf2001 = 978307200;
// What is larger was not written by a store, and would leave none for the purchases to come.
constexpr std::int64_t largest = 900000000000000;

// Twice, since a number with a wrong digit is a number as well.
std::string textOf(const Counters& counters) {
    const auto line = std::to_string(counters.number) + " " + std::to_string(counters.identifier) + "\n";
    return "CVSN1\n" + line + line;
}

bool isBehind(const Counters& counters, const Counters& next) {
    return counters.number < next.number || counters.identifier < next.identifier;
}

} // namespace

std::optional<Counters> CounterFile::read() const {
    const auto text = readFile(file_);
    if (!text) return std::nullopt;
    Counters counters;
    std::istringstream stream(*text);
    std::string mark;
    stream >> mark >> counters.number >> counters.identifier;
    const bool isWhole = stream && *text == textOf(counters) && counters.number > 0 &&
                         counters.number <= largest && counters.identifier <= largest;
    return isWhole ? std::optional(counters) : std::nullopt;
}

void CounterFile::begin() {
    if (makePrivateFolder(file_.parent_path())) static_cast<void>(writeNewFile(file_, textOf({})));
}

void CounterFile::keep(const Counters& next) {
    if (!isBehind({}, next)) return; // none is used
    if (!kept_) kept_ = read();
    if (kept_ && !isBehind(*kept_, next)) return;
    if (const auto current = read(); current && !isBehind(*current, next)) { // another process was here
        kept_ = current;
        return;
    }
    const bool isUsable = read().has_value();
    const Counters reserved{.number = next.number + ahead, .identifier = next.identifier + ahead};
    const auto attempt = [&] { return replaceFile(file_, textOf(reserved)); };
    if (attempt() || (!isUsable && quarantine(file_) && attempt())) kept_ = reserved;
}

Counters countersByTime() {
    using TenthsOfMilliseconds = std::chrono::duration<std::int64_t, std::ratio<1, 10000>>;
    const auto passed =
        std::chrono::system_clock::now() - std::chrono::system_clock::from_time_t(startOf2001);
    const auto used = std::chrono::duration_cast<TenthsOfMilliseconds>(passed).count();
    const Counters first;
    return {.number = first.number + used, .identifier = first.identifier + used};
}

} // namespace corvantile
