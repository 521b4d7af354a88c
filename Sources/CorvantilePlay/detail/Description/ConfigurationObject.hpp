#pragma once

#include "CorvantilePlay/PlayConfiguration.hpp"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace corvantile {

// Keeps the whole document alive, through `json`.
struct PlayConfiguration::Object {
    std::shared_ptr<const nlohmann::json> json;
    std::string file;
    std::string path; // where the object stands in the file: empty at the top, else such as `sinks[1]`
};

} // namespace corvantile
