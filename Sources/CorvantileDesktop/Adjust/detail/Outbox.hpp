#pragma once

#include "CorvantileDesktop/Adjust/detail/HeldPackages.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxConnection.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class Console;

// The packages that wait, in order: in a file, and in memory what the file does not take, until it does. The
// console hears when that begins and ends, and of a file that was set aside. Processes share the file; the
// one that holds the claim delivers. Threads: any. Errors: none.
class Outbox {
public:
    using Background = OutboxConnection::Background;
    using MakeSession = std::function<OutboxPackage(std::int64_t count)>;

    // How long an app rests before its next activity is another session.
    static constexpr std::chrono::minutes sessionGap{30};

    // An empty path: everything stays in memory. The file is opened by the first call that needs it; work
    // that waits for the disk is handed to `inBackground`.
    Outbox(std::filesystem::path file, std::shared_ptr<Console> console, Background inBackground);
    Outbox(const Outbox&) = delete;
    Outbox& operator=(const Outbox&) = delete;
    ~Outbox();

    // In the file once the call has returned, unless the console has heard that it cannot be.
    void add(OutboxPackage package);
    // False, and nothing is added, when one of the last transactions had the same identifier.
    bool addUnlessRepeated(const OutboxPackage& package, const std::string& transactionId);
    // The app is active now. Adds what `make` makes, given the session's number from 1, if that is a session.
    void addSession(Date now, const MakeSession& make);
    void noteActivity(Date now);

    // Small things to know in the next process.
    [[nodiscard]] std::optional<std::string> remembered(std::string_view name);
    void remember(std::string_view name, std::string value);

    // Who has it may deliver; false when another process has it.
    bool claim();
    void release();
    // The first that waits. Only with the claim.
    [[nodiscard]] std::optional<OutboxPackage> front();
    // Writes down what became of an attempt to deliver it.
    void record(OutboxPackage package, PackageState state, DeliveryAnswer answer);

    [[nodiscard]] std::vector<OutboxEntry> entries();

private:
    // What follows with the mutex held.
    void apply(const std::function<OutboxChange()>& decide);
    [[nodiscard]] bool canWrite() const;
    [[nodiscard]] std::optional<std::string> known(std::string_view name);
    [[nodiscard]] double lastActivity();

    std::mutex mutex_;
    OutboxConnection connection_;
    HeldPackages held_;
};

} // namespace corvantile
