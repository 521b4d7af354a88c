#pragma once

#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <csignal>
#include <fstream>
#include <iterator>

#include <sys/resource.h>

// What the tests of stores need: somebody who listens to them, a look at their files, and a full disk.
namespace corvantile {

class ListeningConsole final : public Console {
public:
    void print(std::string_view text) override {
        lines.emplace_back(text);
        if (callBack) callBack();
    }
    std::vector<std::string> lines;
    std::function<void()> callBack;
};

// Empty when `file` is no regular file.
inline std::string bytesOf(const std::filesystem::path& file) {
    if (!std::filesystem::is_regular_file(file)) return {};
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeFile(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

inline std::filesystem::path beside(std::filesystem::path file, std::string_view suffix) {
    return file += suffix;
}

inline void alter(const std::filesystem::path& file, const char* statements) {
    SqliteDatabase(file, SqliteDatabase::Missing::fails).execute(statements);
}

// A disk on which no file can grow beyond a size.
class SmallDisk {
public:
    explicit SmallDisk(std::uintmax_t largestFile) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{static_cast<rlim_t>(largestFile), before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_{};
};

} // namespace corvantile
