#include "CorvantileDesktop/Adjust/detail/OutboxConnection.hpp"

#include "CorvantileDesktop/Adjust/detail/HeldPackages.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace corvantile {

namespace {

constexpr std::chrono::seconds lookInterval{1};
constexpr int longOutboxLog = 200; // pages

} // namespace

OutboxConnection::OutboxConnection(std::filesystem::path path, std::shared_ptr<Console> console,
                                   Background inBackground)
    : path_(std::move(path)),
      console_(std::move(console)),
      inBackground_(std::move(inBackground)),
      logWatch_(longOutboxLog) {}

void OutboxConnection::look(HeldPackages& held) {
    const auto now = std::chrono::steady_clock::now();
    if (now < nextLook_) return;
    nextLook_ = now + lookInterval;
    if (!file_ || !held.isEmpty() || file_->hasMoved()) catchUp(held);
}

void OutboxConnection::catchUp(HeldPackages& held) {
    if (path_.empty()) return;
    try {
        if (!file_ || file_->hasMoved()) open();
        if (!held.isEmpty()) held.writeTo(*file_);
    } catch (const SqliteError& error) {
        return fail(error);
    }
    if (std::exchange(hasComplained_, false)) say("are written again to " + path_.string() + ".");
}

void OutboxConnection::open() {
    if (file_ && file_->hasMoved()) release(); // the claim's file may have gone as well
    file_.reset();
    auto opened = openOrBeginState(path_, OutboxFile::format);
    if (opened.setAside)
        say("that waited are lost from view: " + path_.string() + " cannot be used (" + opened.reason +
            ") and was set aside as " + opened.setAside->filename().string() + ". A new outbox has begun.");
    file_ = std::make_unique<OutboxFile>(std::move(opened.database));
}

void OutboxConnection::fail(const SqliteError& error) {
    if (!error.mayPass()) file_.reset();
    nextLook_ = std::chrono::steady_clock::now() + lookInterval;
    if (!std::exchange(hasComplained_, true))
        say("cannot be written to " + path_.string() + " (" + error.what() +
            "). They stay in memory until they can be.");
}

void OutboxConnection::keepLogShort() {
    if (file_ && logWatch_.hasGrownLong(file_->logPages()) && inBackground_)
        inBackground_([path = path_] { emptyStateLog(path, OutboxFile::format); });
}

bool OutboxConnection::claim() {
    if (claim_ || !file_) return true;
    auto name = path_;
    name += ".claim";
    Descriptor file(::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file || ::flock(file.value(), LOCK_EX | LOCK_NB) != 0) return false;
    claim_ = std::move(file);
    return true;
}

void OutboxConnection::say(const std::string& text) const {
    console_->print("Corvantile: Adjust's packages " + text);
}

} // namespace corvantile
