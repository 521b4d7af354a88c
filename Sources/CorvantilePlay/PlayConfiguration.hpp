#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

/// One JSON object of an app description, such as the configuration of a plug-in.
/// A member that is not as expected throws an error that names the file, the path of keys and what was
/// expected; playMain prints it and returns 2. A value: copies share the JSON. Threads: any.
class CORVANTILE_API PlayConfiguration {
public:
    struct Object; // internal: the JSON

    explicit PlayConfiguration(std::shared_ptr<const Object> object);

    /// Fails for a member of any other name. Call it first, so that a misspelt key is not ignored.
    void allow(std::initializer_list<std::string_view> keys) const;

    [[nodiscard]] bool has(std::string_view key) const;
    /// A text is never empty. Without a default, a missing member is an error.
    [[nodiscard]] std::string text(std::string_view key) const;
    [[nodiscard]] std::string text(std::string_view key, std::string_view otherwise) const;
    [[nodiscard]] bool boolean(std::string_view key, bool otherwise) const;
    [[nodiscard]] std::uint64_t unsignedInteger(std::string_view key) const;
    /// Not negative; nullopt when the member is missing.
    [[nodiscard]] std::optional<double> amount(std::string_view key) const;
    /// Empty when the member is missing.
    [[nodiscard]] std::vector<std::string> texts(std::string_view key) const;
    [[nodiscard]] std::map<std::string, std::string> textsByName(std::string_view key) const;
    [[nodiscard]] std::vector<PlayConfiguration> objects(std::string_view key) const;
    [[nodiscard]] PlayConfiguration object(std::string_view key) const;

    /// The folder of the description, which is also the app's bundle.
    [[nodiscard]] std::filesystem::path folder() const;

    /// Throws the error `FILE: PATH: why`. An empty `key` names the object itself.
    [[noreturn]] void fail(std::string_view key, std::string_view why) const;

private:
    std::shared_ptr<const Object> object_;
};

} // namespace corvantile
