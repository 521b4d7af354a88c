#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxFile.hpp"
#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace corvantile {

class Console;
class HeldPackages;

// An outbox's way to its file, which comes and goes: opened by the first look, given up when it fails, and
// made anew. The console hears when it begins to fail, when it works again, and of a file that was set aside.
// Threads: one at a time.
class OutboxConnection {
public:
    using Background = std::function<void(std::function<void()>)>;

    // An empty path: there never is a file.
    OutboxConnection(std::filesystem::path path, std::shared_ptr<Console> console, Background inBackground);

    // Null while there is none.
    [[nodiscard]] OutboxFile* file() const { return file_.get(); }

    // Now and then looks at what others did to the file, opens it if need be, and moves into it what is held.
    void look(HeldPackages& held);
    // The same, now.
    void catchUp(HeldPackages& held);
    // After an error of the file's.
    void fail(const SqliteError& error);
    // After a write.
    void keepLogShort();

    // False while another process has the claim. Of what is in memory alone no other process knows: there is
    // nothing to claim without a file.
    [[nodiscard]] bool claim();
    void release() { claim_ = Descriptor(); }

private:
    using Moment = std::chrono::steady_clock::time_point;

    void open();
    void say(const std::string& text) const;

    const std::filesystem::path path_;
    const std::shared_ptr<Console> console_;
    const Background inBackground_;
    std::unique_ptr<OutboxFile> file_;
    Descriptor claim_;
    Moment nextLook_{};
    bool hasComplained_ = false;
    LogWatch logWatch_;
};

} // namespace corvantile
