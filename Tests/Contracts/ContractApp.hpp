#pragma once

#include <string>

namespace corvantile {

// The app that every harness launches. Its resource holds bytes that a reader of texts would spoil.
inline const std::string contractBundle = "com.example.contract";
inline const std::string contractResourceName = "Sample";
inline const std::string contractResourceExtension = "bin";
inline const std::string contractResource = std::string("\0\r\n\xFF", 4) + "end";

} // namespace corvantile
