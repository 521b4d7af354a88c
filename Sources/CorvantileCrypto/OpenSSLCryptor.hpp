#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Security/Cryptor.hpp"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// Keeps the key schedule last used, one for each operation, so that a text under the same key only sets its
// IV. Threads never wait for each other: who finds the kept one taken makes another.
class OpenSSLCryptor final : public Cryptor {
public:
    OpenSSLCryptor();
    ~OpenSSLCryptor() override;

    [[nodiscard]] std::optional<std::string> crypt(Operation operation, std::uint32_t options,
                                                   std::string_view key, std::string_view iv,
                                                   std::string_view input) override;

private:
    class Schedule;
    using Kept = std::atomic<Schedule*>;

    static std::unique_ptr<Schedule> take(Kept& kept);
    static void keep(Kept& kept, std::unique_ptr<Schedule> schedule);

    Kept keptForEncrypting_{nullptr};
    Kept keptForDecrypting_{nullptr};
};

} // namespace corvantile
