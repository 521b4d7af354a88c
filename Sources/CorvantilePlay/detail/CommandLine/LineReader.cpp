#include "CorvantilePlay/detail/CommandLine/LineReader.hpp"

#include <algorithm>
#include <array>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace corvantile::tool {

bool LineReader::isReady() {
    if (hasEnded_ || hasLine_) return true;
    pollfd waiting{descriptor_, POLLIN, 0};
    if (::poll(&waiting, 1, 0) <= 0) return false;
    std::array<char, 64 * 1024> bytes;
    const auto count = ::read(descriptor_, bytes.data(), bytes.size());
    if (count > 0) text_.append(bytes.data(), static_cast<std::size_t>(count));
    const bool hasFailed = count < 0 && errno != EINTR && errno != EAGAIN;
    if (hasFailed) error_ = errno;
    hasEnded_ = count == 0 || hasFailed;
    findEnd();
    if (!hasLine_ && text_.size() - begin_ > longestLine) {
        error_ = EMSGSIZE;
        hasEnded_ = true;
        begin_ = text_.size();
    }
    return hasEnded_ || hasLine_;
}

std::optional<std::string> LineReader::next() {
    if (!hasLine_ && (!hasEnded_ || begin_ == text_.size())) return std::nullopt;
    auto line = text_.substr(begin_, searched_ - begin_);
    begin_ = hasLine_ ? searched_ + 1 : text_.size();
    searched_ = begin_;
    findEnd();
    return line;
}

// Goes on where it stopped, and gives back what was read when no line is left in it: a long text is searched
// and moved once.
void LineReader::findEnd() {
    const auto found = text_.find('\n', searched_);
    hasLine_ = found != std::string::npos;
    searched_ = std::min(found, text_.size());
    if (hasLine_ || begin_ == 0) return;
    text_.erase(0, begin_);
    searched_ = text_.size();
    begin_ = 0;
}

} // namespace corvantile::tool
