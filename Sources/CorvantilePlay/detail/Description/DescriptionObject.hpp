#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// One object of an app description, read member by member. Whatever is not as expected is a UsageError that
// names the file, the path of keys and what was expected. Borrows the JSON.
class DescriptionObject {
public:
    // `path` is where the object stands in the file: empty at the top, else such as `sinks[1]`.
    DescriptionObject(const nlohmann::json& object, std::string file, std::string path);

    // Refuses members of other names.
    void allow(std::initializer_list<std::string_view> keys) const;

    [[nodiscard]] std::string text(std::string_view key) const;
    [[nodiscard]] std::string text(std::string_view key, std::string_view otherwise) const;
    [[nodiscard]] bool boolean(std::string_view key, bool otherwise) const;
    [[nodiscard]] std::uint64_t unsignedInteger(std::string_view key) const;
    // Not negative; nullopt when the member is missing.
    [[nodiscard]] std::optional<double> amount(std::string_view key) const;
    [[nodiscard]] bool has(std::string_view key) const { return find(key) != nullptr; }
    // Nothing when the member is missing.
    [[nodiscard]] std::vector<std::string> texts(std::string_view key) const;
    [[nodiscard]] std::map<std::string, std::string> textsByName(std::string_view key) const;
    [[nodiscard]] std::vector<DescriptionObject> objects(std::string_view key) const;
    // An empty object when the member is missing.
    [[nodiscard]] DescriptionObject object(std::string_view key) const;

    // Where the description lies: the app's bundle.
    [[nodiscard]] std::filesystem::path folder() const { return std::filesystem::path(file_).parent_path(); }

    // `key` may be empty: the object itself is at fault.
    [[noreturn]] void fail(std::string_view key, std::string_view why) const;

private:
    [[nodiscard]] const nlohmann::json* find(std::string_view key) const;
    [[nodiscard]] std::string pathOf(std::string_view key) const;
    [[noreturn]] void failType(std::string_view key, std::string_view expected,
                               const nlohmann::json& found) const;
    [[nodiscard]] const nlohmann::json& list(std::string_view key) const;

    const nlohmann::json& object_;
    std::string file_;
    std::string path_;
};

} // namespace corvantile::tool
