#include "CorvantilePlatform/FatalError.hpp"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace corvantile {

namespace {

std::string_view fileStem(std::string_view path) {
    const auto name = path.substr(path.find_last_of('/') + 1);
    return name.substr(0, name.find_last_of('.'));
}

} // namespace

void fatalErrorAt(std::string_view stem, int line, std::string_view message) {
    std::string report = "Corvantile/";
    report.append(stem).append(":").append(std::to_string(line)).append(": Fatal error");
    if (!message.empty()) report.append(": ").append(message);
    report.append("\n");
    std::fwrite(report.data(), 1, report.size(), stderr);
    std::fflush(stderr);
    std::abort();
}

void fatalError(std::string_view message, const char* file, int line) {
    fatalErrorAt(fileStem(file), line, message);
}

void unimplementedInitializer(std::string_view className, const char* file, int line) {
    std::string message = "Use of unimplemented initializer 'init()' for class 'Corvantile.";
    message.append(className).append("'");
    fatalError(message, file, line);
}

} // namespace corvantile
