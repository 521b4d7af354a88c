#include "CorvantileDesktop/Foundation/detail/DefaultsMirror.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"

#include <string>
#include <utility>

namespace corvantile {

namespace {

// A turn of the main loop may take microseconds; a full disk is asked less often.
constexpr std::chrono::seconds attemptInterval{1};

void apply(const DefaultsFile::Change& change, std::string_view key, NSUserDefaults::Dictionary& values) {
    const auto found = values.find(key);
    if (!change && found != values.end())
        values.erase(found);
    else if (change && found != values.end())
        found->second = *change;
    else if (change)
        values.emplace(key, *change);
}

} // namespace

DefaultsMirror::DefaultsMirror(std::filesystem::path path, std::shared_ptr<Console> console)
    : path_(std::move(path)), console_(std::move(console)) {}

void DefaultsMirror::set(std::string_view key, std::optional<NSUserDefaults::Value> value) {
    apply(value, key, values_);
    if (path_.empty()) return;
    const bool wasBehind = isBehind();
    if (!wasBehind && isWritten(key, value)) return;
    unwritten_.insert_or_assign(std::string(key), std::move(value));
    if (wasBehind || !file_) catchUp();
}

bool DefaultsMirror::isWritten(std::string_view key, const DefaultsFile::Change& change) {
    try {
        file_->write(key, change);
        return true;
    } catch (const SqliteError& error) {
        fail(error);
        return false;
    }
}

void DefaultsMirror::notice() {
    if (path_.empty()) return;
    if (isBehind()) {
        if (std::chrono::steady_clock::now() >= nextAttempt_) catchUp();
        return;
    }
    try {
        if (file_->hasMoved())
            open();
        else if (file_->hasChangedElsewhere())
            values_ = file_->load();
    } catch (const SqliteError& error) {
        fail(error);
        if (!file_) catchUp();
    }
}

bool DefaultsMirror::catchUp() {
    if (path_.empty()) return false;
    try {
        if (!file_ || file_->hasMoved()) open();
        if (!unwritten_.empty()) file_->write(unwritten_);
    } catch (const SqliteError& error) {
        fail(error);
        return false;
    }
    unwritten_.clear();
    if (std::exchange(hasComplained_, false))
        say("User defaults are written again to " + path_.string() + ".");
    return true;
}

bool DefaultsMirror::isBehind() const { return !path_.empty() && (!file_ || !unwritten_.empty()); }

void DefaultsMirror::open() {
    file_.reset();
    auto opened = openOrBeginState(path_, DefaultsFile::format);
    if (opened.setAside)
        say("User defaults began anew: " + path_.string() + " cannot be used (" + opened.reason +
            ") and was set aside as " + opened.setAside->filename().string() + ".");
    auto file = std::make_unique<DefaultsFile>(std::move(opened.database));
    values_ = file->load();
    for (const auto& [key, change] : unwritten_) apply(change, key, values_);
    file_ = std::move(file);
}

void DefaultsMirror::fail(const SqliteError& error) {
    // Of a file that was damaged under our hands, everything that we know is worth saving.
    if (error.isUnreadable())
        for (const auto& [key, value] : values_) unwritten_.try_emplace(key, value);
    if (!error.mayPass()) file_.reset();
    nextAttempt_ = std::chrono::steady_clock::now() + attemptInterval;
    if (!std::exchange(hasComplained_, true))
        say("User defaults cannot be written to " + path_.string() + " (" + error.what() +
            "). They stay in memory until they can be.");
}

void DefaultsMirror::say(const std::string& text) const { console_->print("Corvantile: " + text); }

} // namespace corvantile
