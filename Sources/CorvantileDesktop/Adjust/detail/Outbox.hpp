#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxFile.hpp"
#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantileDesktop/Adjust/detail/UnwrittenPackages.hpp"
#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantileDesktop/detail/Storage/RetryingFile.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class Console;

// The packages that wait, in order: in a file, and in memory what the file refuses, until it can be written.
// Processes share the file; the one that holds the claim delivers. Threads: any. Errors: none.
class Outbox : NonCopyable {
public:
    using MakeSession = std::function<OutboxPackage(std::int64_t count)>;

    // How long an app rests before its next activity is another session.
    static constexpr std::chrono::minutes sessionGap{30};

    // An empty path: everything stays in memory. The file is opened by the first call that needs it.
    Outbox(const std::filesystem::path& file, std::shared_ptr<Console> console,
           BackgroundRunner inBackground);
    ~Outbox();

    // In the file once the call has returned, unless the console has a line that it cannot be.
    void add(OutboxPackage package);
    // False, and nothing is added, when one of the last transactions had the same identifier.
    bool addUnlessRepeated(const OutboxPackage& package, const std::string& transactionId);
    // The app is active now. Adds what `make` makes, given the session's number from 1, if that is a session.
    void addSession(Date now, const MakeSession& make);
    void noteActivity(Date now);

    // Small values for the next process, by the names in `outboxmemory`.
    [[nodiscard]] std::optional<std::string> remembered(std::string_view name);
    void remember(std::string_view name, std::string value);

    // Takes or keeps the right to deliver; false while another process has it. Packages in memory alone are
    // known to no other process: without a file there is nothing to claim.
    bool claim();
    void release();
    // The first that waits. Only with the claim.
    [[nodiscard]] std::optional<OutboxPackage> front();
    // Stores the result of an attempt to deliver it.
    void record(OutboxPackage package, PackageState state, DeliveryAnswer answer);

    [[nodiscard]] std::vector<OutboxEntry> entries();

private:
    // What follows with the mutex held.
    void refresh();
    void catchUp();
    void recall(const OutboxFile& file);
    void apply(const std::function<OutboxChange()>& decide);
    [[nodiscard]] bool claimFile();
    [[nodiscard]] bool canWrite() const;
    [[nodiscard]] std::optional<std::string> known(std::string_view name);
    [[nodiscard]] double lastActivity();

    std::mutex mutex_;
    RetryingFile<OutboxFile> file_;
    UnwrittenPackages unwritten_;
    // What the file was seen to remember, for as long as it cannot be opened for writing.
    std::map<std::string, std::string, std::less<>> recalled_;
    Descriptor claim_;
};

} // namespace corvantile
