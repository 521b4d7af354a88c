#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <memory>
#include <string>

namespace corvantile {

// The device's advertising identifier. Threads: any.
class CORVANTILE_API ASIdentifierManager : NonCopyable {
public:
    // The identifier while the user withholds it.
    static constexpr const char* withheldIdentifier = "00000000-0000-0000-0000-000000000000";

    virtual ~ASIdentifierManager();

    // The manager of the installed platform.
    [[nodiscard]] static std::shared_ptr<ASIdentifierManager> shared();

    // An upper-case UUID; all zeros where the user withholds it.
    [[nodiscard]] virtual std::string advertisingIdentifier() const = 0;
};

} // namespace corvantile
