#include "DesktopPlatform/Adjust/Outbox.hpp"

#include "DesktopPlatform/Adjust/TransactionMemory.hpp"
#include "Platform/Foundation/Console.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace corvantile {

namespace {

// At what others did to the file, and whether it can be written.
constexpr std::chrono::seconds lookInterval{1};
constexpr int longLog = 200; // pages

// What the same connection may well do later; after anything else it is made anew.
bool mayPass(const SqliteError& error) {
    return error.code() == SQLITE_FULL || error.code() == SQLITE_BUSY ||
           error.extendedCode() == SQLITE_IOERR_WRITE;
}

std::int64_t numberIn(const std::optional<std::string>& text) {
    std::int64_t number = 0;
    if (text) std::from_chars(text->data(), text->data() + text->size(), number);
    return number;
}

std::string wholeSeconds(Date date) {
    return std::to_string(static_cast<std::int64_t>(std::floor(date.secondsSinceUnixEpoch())));
}

double createdAt(const OutboxPackage& package) { return entryOf(package).created.secondsSinceUnixEpoch(); }

} // namespace

Outbox::Outbox(std::filesystem::path file, std::shared_ptr<Console> console, Background inBackground)
    : path_(std::move(file)), console_(std::move(console)), inBackground_(std::move(inBackground)) {}

Outbox::~Outbox() {
    if (!path_.empty() && !held_.isEmpty()) catchUp();
}

void Outbox::add(OutboxPackage package) {
    std::unique_lock lock(mutex_);
    look();
    if (isBehind() || path_.empty()) {
        held_.add(std::move(package));
    } else {
        try {
            file_->add(package);
        } catch (const SqliteError& error) {
            held_.add(std::move(package));
            fail(error);
        }
    }
    const bool isLong = logGrewLong();
    lock.unlock();
    emptyLogIf(isLong);
}

bool Outbox::addUnlessRepeated(const OutboxPackage& package, const std::string& transactionId) {
    const std::lock_guard lock(mutex_);
    bool isRepeated = false;
    apply([&] {
        auto transactions = withTransaction(known("transactions"), transactionId);
        isRepeated = !transactions;
        OutboxChange change;
        if (isRepeated) return change;
        change.values["transactions"] = std::move(*transactions);
        change.packages.push_back(package);
        return change;
    });
    return !isRepeated;
}

void Outbox::addSession(Date now, const MakeSession& make) {
    const std::lock_guard lock(mutex_);
    apply([&] {
        const auto count = numberIn(known("sessions"));
        const std::chrono::duration<double> rest(now.secondsSinceUnixEpoch() - lastActivity());
        OutboxChange change{.packages = {}, .values = {{"last-active", wholeSeconds(now)}}};
        if (count > 0 && rest < sessionGap) return change;
        change.values["sessions"] = std::to_string(count + 1);
        change.packages.push_back(make(count + 1));
        return change;
    });
}

void Outbox::noteActivity(Date now) { remember("last-active", wholeSeconds(now)); }

std::optional<std::string> Outbox::remembered(std::string_view name) {
    const std::lock_guard lock(mutex_);
    look();
    return known(name);
}

void Outbox::remember(std::string_view name, std::string value) {
    const std::lock_guard lock(mutex_);
    apply([&] { return OutboxChange{.packages = {}, .values = {{std::string(name), value}}}; });
}

// Decided and written as one, if the file can be written; then also against other processes.
void Outbox::apply(const std::function<OutboxChange()>& decide) {
    look();
    if (!isBehind() && !path_.empty()) try {
            file_->begin();
            const auto change = decide();
            for (const auto& package : change.packages) file_->add(package);
            for (const auto& [name, value] : change.values) file_->setValue(name, value);
            file_->commit();
            return;
        } catch (const SqliteError& error) {
            file_->rollBack();
            fail(error);
        }
    held_.add(decide());
}

bool Outbox::claim() {
    const std::lock_guard lock(mutex_);
    look();
    return path_.empty() || hasClaimed() || !file_;
}

// Of what is in memory alone no other process knows: only the file is claimed.
bool Outbox::hasClaimed() {
    if (claim_ || !file_) return file_ != nullptr;
    auto name = path_;
    name += ".claim";
    Descriptor file(::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file || ::flock(file.value(), LOCK_EX | LOCK_NB) != 0) return false;
    claim_ = std::move(file);
    return true;
}

void Outbox::release() {
    const std::lock_guard lock(mutex_);
    claim_ = Descriptor();
}

std::optional<OutboxPackage> Outbox::front() {
    const std::lock_guard lock(mutex_);
    look();
    if (hasClaimed()) try {
            auto package = file_->firstWaiting(delivered_);
            while (package && held_.hasDelivered(*package)) package = file_->firstWaiting(package->number);
            if (package) return package;
        } catch (const SqliteError& error) {
            fail(error);
        }
    return held_.firstWaiting();
}

void Outbox::record(OutboxPackage package, PackageState state, DeliveryAnswer answer) {
    const std::lock_guard lock(mutex_);
    package.state = state;
    ++package.tries;
    answer.text.resize(std::min(answer.text.size(), OutboxFile::keptBytes));
    package.lastAnswer = std::move(answer);
    if (held_.record(package)) return;
    if (state != PackageState::waiting) delivered_ = std::max(delivered_, package.number);
    try {
        if (file_ && held_.isEmpty()) return file_->record(package);
    } catch (const SqliteError& error) {
        fail(error);
    }
    held_.addAttempt(std::move(package));
}

std::vector<OutboxEntry> Outbox::entries() {
    const std::lock_guard lock(mutex_);
    look();
    std::vector<OutboxEntry> found;
    if (file_) try {
            for (const auto& package : file_->packages()) found.push_back(entryOf(package));
        } catch (const SqliteError& error) {
            fail(error);
        }
    for (const auto& package : held_.packages()) found.push_back(entryOf(package));
    return found;
}

std::optional<std::string> Outbox::known(std::string_view name) {
    if (auto held = held_.value(name)) return held;
    if (file_) try {
            return file_->value(name);
        } catch (const SqliteError&) {
            // Whoever writes next finds out, and says so.
        }
    return std::nullopt;
}

double Outbox::lastActivity() {
    auto last = static_cast<double>(numberIn(known("last-active")));
    if (!held_.packages().empty()) last = std::max(last, createdAt(held_.packages().back()));
    if (file_) try {
            if (const auto newest = file_->newest()) last = std::max(last, createdAt(*newest));
        } catch (const SqliteError&) {
            // As above.
        }
    return last;
}

void Outbox::look() {
    if (path_.empty()) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < nextLook_) return;
    nextLook_ = now + lookInterval;
    if (isBehind() || file_->hasMoved()) catchUp();
}

void Outbox::catchUp() {
    try {
        if (!file_ || file_->hasMoved()) open();
        if (!held_.isEmpty()) held_.writeTo(*file_);
    } catch (const SqliteError& error) {
        return fail(error);
    }
    if (std::exchange(hasComplained_, false)) say("are written again to " + path_.string() + ".");
}

void Outbox::open() {
    if (file_ && file_->hasMoved()) claim_ = Descriptor(); // whose file may have gone as well
    file_.reset();
    delivered_ = 0;
    auto opened = openOrBeginState(path_, OutboxFile::format);
    if (opened.setAside)
        say("that waited are lost from view: " + path_.string() + " cannot be used (" + opened.reason +
            ") and was set aside as " + opened.setAside->filename().string() + ". A new outbox has begun.");
    file_ = std::make_unique<OutboxFile>(std::move(opened.database));
    nextEmptying_ = longLog;
}

bool Outbox::isBehind() const { return !path_.empty() && (!file_ || !held_.isEmpty()); }

void Outbox::fail(const SqliteError& error) {
    if (!mayPass(error)) file_.reset();
    nextLook_ = std::chrono::steady_clock::now() + lookInterval;
    if (!std::exchange(hasComplained_, true))
        say("cannot be written to " + path_.string() + " (" + error.what() +
            "). They stay in memory until they can be.");
}

bool Outbox::logGrewLong() {
    const int pages = file_ ? file_->logPages() : 0;
    if (pages < longLog) nextEmptying_ = longLog; // it was emptied meanwhile
    if (pages < nextEmptying_) return false;
    nextEmptying_ = pages + longLog;
    return true;
}

void Outbox::emptyLogIf(bool isLong) const {
    if (!isLong || !inBackground_) return;
    inBackground_([file = path_] {
        try {
            emptyStateLog(file, OutboxFile::format);
        } catch (const SqliteError&) {
            // Nothing is lost with a long log, and a longer one is tried again.
        }
    });
}

void Outbox::say(const std::string& text) const { console_->print("Corvantile: Adjust's packages " + text); }

} // namespace corvantile
