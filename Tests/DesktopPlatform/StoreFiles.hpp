#pragma once

#include "Platform/Foundation/Console.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

// What the tests of both stores need: somebody who listens to them, and a look at their files.
namespace corvantile {

class ListeningConsole final : public Console {
public:
    void print(std::string_view text) override { lines.emplace_back(text); }
    std::vector<std::string> lines;
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

inline void removeLog(const std::filesystem::path& file) {
    for (const auto* const suffix : {"-wal", "-shm"}) std::filesystem::remove(beside(file, suffix));
}

} // namespace corvantile
