#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"

#include "CorvantileDesktop/Adjust/detail/OutboxMemory.hpp"
#include "CorvantileDesktop/Adjust/detail/TransactionMemory.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvantile {

namespace {

namespace memory = outboxmemory;

std::string wholeSeconds(Date date) {
    return std::to_string(static_cast<std::int64_t>(std::floor(date.secondsSinceUnixEpoch())));
}

double createdAt(const OutboxPackage& package) { return entryOf(package).created.secondsSinceUnixEpoch(); }

} // namespace

Outbox::Outbox(std::filesystem::path file, std::shared_ptr<Console> console, Background inBackground)
    : connection_(std::move(file), std::move(console), std::move(inBackground)) {}

Outbox::~Outbox() {
    if (!held_.isEmpty()) connection_.catchUp(held_);
}

void Outbox::add(OutboxPackage package) {
    const std::lock_guard lock(mutex_);
    connection_.look(held_);
    if (canWrite()) try {
            connection_.file()->add(package);
            return connection_.keepLogShort();
        } catch (const SqliteError& error) {
            connection_.fail(error);
        }
    held_.add(std::move(package));
}

bool Outbox::addUnlessRepeated(const OutboxPackage& package, const std::string& transactionId) {
    const std::lock_guard lock(mutex_);
    bool isRepeated = false;
    apply([&] {
        auto transactions = withTransaction(known(memory::transactions), transactionId);
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
    const std::lock_guard lock(mutex_);
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
    const std::lock_guard lock(mutex_);
    connection_.look(held_);
    return known(name);
}

void Outbox::remember(std::string_view name, std::string value) {
    const std::lock_guard lock(mutex_);
    apply([&] { return OutboxChange{.packages = {}, .values = {{std::string(name), value}}}; });
}

// Decided and written as one, if the file can be written; then also against other processes.
void Outbox::apply(const std::function<OutboxChange()>& decide) {
    connection_.look(held_);
    if (canWrite()) {
        auto& file = *connection_.file();
        try {
            file.begin();
            const auto change = decide();
            for (const auto& package : change.packages) file.add(package);
            for (const auto& [name, value] : change.values) file.setValue(name, value);
            file.commit();
            return connection_.keepLogShort();
        } catch (const SqliteError& error) {
            file.rollBack();
            connection_.fail(error);
        }
    }
    held_.add(decide());
}

bool Outbox::claim() {
    const std::lock_guard lock(mutex_);
    connection_.look(held_);
    return connection_.claim();
}

void Outbox::release() {
    const std::lock_guard lock(mutex_);
    connection_.release();
}

std::optional<OutboxPackage> Outbox::front() {
    const std::lock_guard lock(mutex_);
    connection_.look(held_);
    if (const auto* const file = connection_.file(); file != nullptr && connection_.claim()) try {
            auto package = file->firstWaiting();
            while (package && held_.hasDelivered(*package)) package = file->firstWaiting(package->number);
            if (package) return package;
        } catch (const SqliteError& error) {
            connection_.fail(error);
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
    if (canWrite()) try {
            connection_.file()->record(package);
            return connection_.keepLogShort();
        } catch (const SqliteError& error) {
            connection_.fail(error);
        }
    held_.addAttempt(std::move(package));
}

std::vector<OutboxEntry> Outbox::entries() {
    const std::lock_guard lock(mutex_);
    connection_.look(held_);
    std::vector<OutboxEntry> found;
    if (auto* const file = connection_.file()) try {
            for (const auto& package : file->packages()) found.push_back(entryOf(package));
        } catch (const SqliteError& error) {
            connection_.fail(error);
        }
    for (const auto& package : held_.packages()) found.push_back(entryOf(package));
    return found;
}

std::optional<std::string> Outbox::known(std::string_view name) {
    if (auto held = held_.value(name)) return held;
    if (auto* const file = connection_.file()) try {
            return file->value(name);
        } catch (const SqliteError&) {
            // Whoever writes next finds out, and says so.
        }
    return std::nullopt;
}

double Outbox::lastActivity() {
    auto last = static_cast<double>(memory::number(known(memory::lastActive)));
    if (!held_.packages().empty()) last = std::max(last, createdAt(held_.packages().back()));
    if (auto* const file = connection_.file()) try {
            if (const auto newest = file->newest()) last = std::max(last, createdAt(*newest));
        } catch (const SqliteError&) {
            // As above.
        }
    return last;
}

// In order: nothing overtakes what is held.
bool Outbox::canWrite() const { return connection_.file() != nullptr && held_.isEmpty(); }

} // namespace corvantile
