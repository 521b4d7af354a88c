#include "CorvantileDesktop/detail/Storage/WriteAheadLog.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"

#include <bit>
#include <cstring>
#include <utility>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t headerSize = 32, frameHeaderSize = 24, saltsSize = 8;
constexpr std::size_t saltsInHeader = 16, saltsInFrame = 8;
constexpr std::uint32_t magicNumber = 0x377F0682; // plus one: checksums are of big-endian words

std::uint32_t wordAt(std::string_view bytes, std::size_t place, bool isBigEndian = true) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + place, sizeof word);
    const bool isNative = isBigEndian == (std::endian::native == std::endian::big);
    return isNative ? word : __builtin_bswap32(word);
}

struct LogChecksum {
    bool isBigEndian = false;
    std::uint32_t first = 0, second = 0;

    void add(std::string_view bytes) {
        for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
            first += wordAt(bytes, at, isBigEndian) + second;
            second += wordAt(bytes, at + 4, isBigEndian) + first;
        }
    }
    [[nodiscard]] bool isAt(std::string_view bytes, std::size_t place) const {
        return wordAt(bytes, place) == first && wordAt(bytes, place + 4) == second;
    }
};

std::string_view saltsOf(std::string_view frame) { return frame.substr(saltsInFrame, saltsSize); }
std::uint32_t pageOf(std::string_view frame) { return wordAt(frame, 0); }
// Pages of the database after a commit; 0 where the frame ends none.
std::uint32_t databaseSize(std::string_view frame) { return wordAt(frame, 4); }

// Empty when there is none. nullopt when it cannot be read.
std::optional<std::string> logBytes(fs::path file) {
    int error = 0;
    auto bytes = readFile(file += "-wal", error);
    if (!bytes && isMissing(error)) return "";
    return bytes;
}

} // namespace

WriteAheadLog::WriteAheadLog(std::string bytes) : bytes_(std::move(bytes)) { findEnd(); }

std::string_view WriteAheadLog::salts() const {
    return isHeaderValid_ ? std::string_view(bytes_).substr(saltsInHeader, saltsSize) : std::string_view();
}

bool WriteAheadLog::hasValidHeader() const {
    if (bytes_.size() < headerSize) return false;
    const auto magic = wordAt(bytes_, 0);
    LogChecksum checksum{.isBigEndian = (magic & 1) != 0};
    checksum.add(std::string_view(bytes_).substr(0, headerSize - 8));
    const auto pageSize = wordAt(bytes_, 8);
    return (magic & ~1U) == magicNumber && std::has_single_bit(pageSize) && pageSize >= 512 &&
           pageSize <= 65536 && checksum.isAt(bytes_, headerSize - 8);
}

std::size_t WriteAheadLog::frameSize() const { return frameHeaderSize + pageSize_; }

std::size_t WriteAheadLog::frameCount() const {
    return bytes_.size() < headerSize ? 0 : (bytes_.size() - headerSize) / frameSize();
}

std::string_view WriteAheadLog::frame(std::size_t index) const {
    return std::string_view(bytes_).substr(headerSize + index * frameSize(), frameSize());
}

void WriteAheadLog::findEnd() {
    isHeaderValid_ = hasValidHeader();
    if (!isHeaderValid_) return;
    pageSize_ = wordAt(bytes_, 8);
    LogChecksum checksum{(wordAt(bytes_, 0) & 1) != 0, wordAt(bytes_, 24), wordAt(bytes_, 28)};
    for (; valid_ < frameCount(); ++valid_) {
        const auto next = frame(valid_);
        checksum.add(next.substr(0, 8));
        checksum.add(next.substr(frameHeaderSize));
        if (saltsOf(next) != salts() || pageOf(next) == 0 || !checksum.isAt(next, 16)) return;
        if (databaseSize(next) != 0) committed_ = valid_ + 1;
    }
}

// A process that is killed while it commits leaves one frame of which only the header is new. That is no
// loss; at the very end of a log that grows, such a frame is not complete.
bool WriteAheadLog::isCutOff() const {
    const auto count = frameCount();
    if (count == 0) return false;
    const auto wanted = isHeaderValid_ ? salts() : saltsOf(frame(0));
    const bool isGrowing = bytes_.size() == headerSize + count * frameSize();
    const bool isFirstCounted = !isHeaderValid_ || (isGrowing && valid_ + 1 == count);
    for (auto index = valid_ + (isFirstCounted ? 0 : 1); index < count; ++index)
        if (saltsOf(frame(index)) == wanted && databaseSize(frame(index)) != 0) return true;
    return false;
}

void WriteAheadLog::applyTo(std::string& database) const {
    if (committed_ == 0) return;
    database.resize(databaseSize(frame(committed_ - 1)) * pageSize_);
    for (std::size_t index = 0; index < committed_; ++index) {
        const auto at = (pageOf(frame(index)) - 1) * pageSize_;
        if (at + pageSize_ <= database.size()) // or the database has become shorter since
            database.replace(at, pageSize_, frame(index).substr(frameHeaderSize));
    }
}

// Asked again: a process that writes meanwhile may have been read half.
bool isLogCutOff(const fs::path& file) {
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        auto bytes = logBytes(file);
        if (!bytes || !WriteAheadLog(std::move(*bytes)).isCutOff()) return false;
    }
    return true;
}

std::optional<std::string> databaseImage(const fs::path& file) {
    constexpr std::size_t modePlace = 18; // two bytes: 2 with a log, 1 without
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const auto before = logBytes(file);
        auto image = SqliteDatabase::bytesOf(file);
        auto after = logBytes(file);
        if (!before || !image || !after) return std::nullopt;
        // What was moved out of the log meanwhile is in it still, unless it was begun again.
        if (before->substr(0, headerSize) != after->substr(0, headerSize)) continue;
        WriteAheadLog(std::move(*after)).applyTo(*image);
        if (image->size() > modePlace + 2) image->replace(modePlace, 2, 2, '\1');
        return image;
    }
    return std::nullopt;
}

} // namespace corvantile
