#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"

#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace corvantile {

namespace {

namespace memory = outboxmemory;

std::string wholeSeconds(Date date) {
    return std::to_string(static_cast<std::int64_t>(std::floor(date.secondsSinceUnixEpoch())));
}

double createdAt(const OutboxPackage& package) { return entryOf(package).created.secondsSinceUnixEpoch(); }

} // namespace

Outbox::Outbox(const std::filesystem::path& file, std::shared_ptr<Console> console,
               BackgroundRunner inBackground)
    : file_({.path = file,
             .console = std::move(console),
             .inBackground = std::move(inBackground),
             .subject = "Adjust's packages",
             .lossPrefix = "that waited may be lost from view",
             .lossSuffix = " A new outbox has begun with what could be read.",
             .onDamage = nullptr,
             .fill = [file](SqliteDatabase& fresh) { takeOverPackages(file, fresh); }}) {}

Outbox::~Outbox() {
    if (!unwritten_.isEmpty()) catchUp();
}

// At most once a second, opens the file if need be, looks whether others replaced it, and writes what it
// refused.
void Outbox::refresh() {
    if (file_.isPaused()) return;
    file_.pause();
    if (file_.get() == nullptr || !unwritten_.isEmpty() || file_.hasMoved()) catchUp();
}

void Outbox::catchUp() {
    if (file_.hasMoved()) claim_ = Descriptor(); // its file may have gone as well
    file_.catchUp([this](const OutboxFile& file) { recall(file); },
                  [this](OutboxFile& file) {
                      if (!unwritten_.isEmpty()) unwritten_.writeTo(file);
                  });
}

void Outbox::add(OutboxPackage package) {
    const ReportingLock lock(mutex_);
    refresh();
    if (canWrite() && file_.attempt([&](OutboxFile& file) { file.add(package); })) return;
    unwritten_.add(std::move(package));
}

bool Outbox::addUnlessRepeated(const OutboxPackage& package, const std::string& transactionId) {
    const ReportingLock lock(mutex_);
    bool isRepeated = false;
    apply([&] {
        auto transactions = memory::withTransaction(known(memory::transactions), transactionId);
        isRepeated = !transactions;
        OutboxChange change;
        if (isRepeated) return change;
        change.values[std::string(memory::transactions)] = std::move(*transactions);
        change.packages.push_back(package);
        return change;
    });
    return !isRepeated;
}

void Outbox::addSession(Date now, const MakeSession& make) {
    const ReportingLock lock(mutex_);
    apply([&] {
        const auto count = memory::number(known(memory::sessions));
        const std::chrono::duration<double> rest(now.secondsSinceUnixEpoch() - lastActivity());
        OutboxChange change{.packages = {}, .values = {{std::string(memory::lastActive), wholeSeconds(now)}}};
        if (count > 0 && rest < sessionGap) return change;
        change.values[std::string(memory::sessions)] = std::to_string(count + 1);
        change.packages.push_back(make(count + 1));
        return change;
    });
}

void Outbox::noteActivity(Date now) { remember(memory::lastActive, wholeSeconds(now)); }

std::optional<std::string> Outbox::remembered(std::string_view name) {
    const ReportingLock lock(mutex_);
    refresh();
    return known(name);
}

void Outbox::remember(std::string_view name, std::string value) {
    const ReportingLock lock(mutex_);
    apply([&] { return OutboxChange{.packages = {}, .values = {{std::string(name), value}}}; });
}

// Decided and written as one, if the file can be written; then also against other processes.
void Outbox::apply(const std::function<OutboxChange()>& decide) {
    refresh();
    const auto write = [&](OutboxFile& file) {
        file.transact([&] {
            const auto change = decide();
            for (const auto& package : change.packages) file.add(package);
            for (const auto& [name, value] : change.values) file.setValue(name, value);
        });
    };
    if (canWrite() && file_.attempt(write)) return;
    unwritten_.add(decide());
}

bool Outbox::claim() {
    const ReportingLock lock(mutex_);
    refresh();
    return claimFile();
}

bool Outbox::claimFile() {
    if (claim_ || file_.get() == nullptr) return true;
    auto name = file_.path();
    name += ".claim";
    Descriptor file(::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file || ::flock(file.value(), LOCK_EX | LOCK_NB) != 0) return false;
    claim_ = std::move(file);
    return true;
}

void Outbox::release() {
    const ReportingLock lock(mutex_);
    claim_ = Descriptor();
}

std::optional<OutboxPackage> Outbox::front() {
    const ReportingLock lock(mutex_);
    refresh();
    std::optional<OutboxPackage> package;
    if (claimFile())
        file_.attempt([&](const OutboxFile& file) {
            package = file.firstWaiting();
            while (package && unwritten_.hasDelivered(*package)) package = file.firstWaiting(package->number);
        });
    return package ? package : unwritten_.firstWaiting();
}

void Outbox::record(OutboxPackage package, PackageState state, DeliveryAnswer answer) {
    const ReportingLock lock(mutex_);
    package.state = state;
    ++package.tries;
    answer.text.resize(std::min(answer.text.size(), OutboxFile::keptBytes));
    package.lastAnswer = std::move(answer);
    if (unwritten_.record(package)) return;
    if (canWrite() && file_.attempt([&](OutboxFile& file) { file.record(package); })) return;
    unwritten_.addAttempt(std::move(package));
}

std::vector<OutboxEntry> Outbox::entries() {
    const ReportingLock lock(mutex_);
    refresh();
    std::vector<OutboxEntry> found;
    file_.attempt([&](const OutboxFile& file) {
        for (const auto& package : file.packages()) found.push_back(entryOf(package));
    });
    for (const auto& package : unwritten_.packages()) found.push_back(entryOf(package));
    return found;
}

void Outbox::recall(const OutboxFile& file) {
    for (const auto name : memory::all)
        if (auto value = file.value(name)) recalled_.insert_or_assign(std::string(name), std::move(*value));
}

std::optional<std::string> Outbox::known(std::string_view name) {
    if (auto unwritten = unwritten_.value(name)) return unwritten;
    const auto recalled = recalled_.find(name);
    if (const auto* const file = file_.get()) try {
            return file->value(name);
        } catch (const SqliteError&) {
            // The next write fails as well, which is reported.
        }
    else if (recalled != recalled_.end())
        return recalled->second;
    return std::nullopt;
}

double Outbox::lastActivity() {
    auto last = static_cast<double>(memory::number(known(memory::lastActive)));
    if (!unwritten_.packages().empty()) last = std::max(last, createdAt(unwritten_.packages().back()));
    if (const auto* const file = file_.get()) try {
            if (const auto newest = file->newest()) last = std::max(last, createdAt(*newest));
        } catch (const SqliteError&) {
            // As above.
        }
    return last;
}

// In order: nothing overtakes what is still to be written.
bool Outbox::canWrite() const { return file_.get() != nullptr && unwritten_.isEmpty(); }

} // namespace corvantile
