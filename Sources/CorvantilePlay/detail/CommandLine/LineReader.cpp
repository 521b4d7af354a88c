#include "CorvantilePlay/detail/CommandLine/LineReader.hpp"

#include <array>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace corvantile::tool {

bool LineReader::isReady() {
    if (hasEnded_ || text_.find('\n') != std::string::npos) return true;
    pollfd waiting{descriptor_, POLLIN, 0};
    if (::poll(&waiting, 1, 0) <= 0) return false;
    std::array<char, 4096> bytes;
    const auto count = ::read(descriptor_, bytes.data(), bytes.size());
    if (count > 0) text_.append(bytes.data(), static_cast<std::size_t>(count));
    const bool hasFailed = count < 0 && errno != EINTR && errno != EAGAIN;
    if (hasFailed) error_ = errno;
    hasEnded_ = count == 0 || hasFailed;
    return hasEnded_ || text_.find('\n') != std::string::npos;
}

std::optional<std::string> LineReader::next() {
    const auto end = text_.find('\n');
    if (end == std::string::npos && (!hasEnded_ || text_.empty())) return std::nullopt;
    auto line = text_.substr(0, end);
    text_.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

} // namespace corvantile::tool
