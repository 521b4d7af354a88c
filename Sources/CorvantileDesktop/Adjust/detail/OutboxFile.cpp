#include "CorvantileDesktop/Adjust/detail/OutboxFile.hpp"

#include "CorvantileDesktop/Adjust/detail/FormText.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

namespace corvantile {

namespace {

constexpr std::array<std::string_view, 3> kindNames = {"session", "event", "subscription"};
constexpr std::array<std::string_view, 3> stateNames = {"waiting", "sent", "refused"};

template <class Enumeration>
std::string_view nameOf(const std::array<std::string_view, 3>& names, Enumeration value) {
    return names.at(static_cast<std::size_t>(value));
}

// What only a later version can have written reads as the last.
template <class Enumeration>
Enumeration valueOf(const std::array<std::string_view, 3>& names, std::string_view name) {
    const auto found = std::find(names.begin(), names.end() - 1, name);
    return static_cast<Enumeration>(found - names.begin());
}

SqliteStatement adding(SqliteDatabase& database, PackageKind kind) {
    return database.prepare("INSERT INTO packages (identifier, kind, form) VALUES (?1, '" +
                            std::string(nameOf(kindNames, kind)) + "', ?2)");
}

SqliteStatement recording(SqliteDatabase& database, const std::string& which) {
    return database.prepare(
        "UPDATE packages SET state = CAST(?2 AS TEXT), tries = CAST(?3 AS INTEGER),"
        " status = CASE WHEN length(?4) > 0 THEN CAST(?4 AS INTEGER) END, answer = ?5,"
        " form = CASE WHEN ?2 = x'77616974696e67' THEN form ELSE substr(form, 1, CAST(?6 AS INTEGER)) END"
        " WHERE identifier = ?1 AND " +
        which);
}

SqliteStatement reading(SqliteDatabase& database, const std::string& which) {
    return database.prepare(
        "SELECT number, identifier, kind, form, state, tries, status, answer FROM packages " + which);
}

OutboxPackage packageOf(const SqliteRun& row) {
    OutboxPackage package{.number = row.integer(0),
                          .identifier = std::string(row.bytes(1)),
                          .kind = valueOf<PackageKind>(kindNames, row.bytes(2)),
                          .form = std::string(row.bytes(3)),
                          .state = valueOf<PackageState>(stateNames, row.bytes(4)),
                          .tries = static_cast<int>(row.integer(5))};
    if (package.tries == 0) return package;
    auto& answer = package.lastAnswer.emplace();
    if (const auto status = row.integer(6); status != 0) answer.status = static_cast<int>(status);
    answer.text = row.bytes(7);
    return package;
}

void append(std::vector<OutboxPackage>& packages, SqliteRun run) {
    while (run.next()) packages.push_back(packageOf(run));
}

std::optional<OutboxPackage> onePackage(SqliteRun run) {
    if (!run.next()) return std::nullopt;
    return packageOf(run);
}

std::string withTransactions(std::string known, const std::string& later) {
    for (const auto& field : formFields(later))
        if (auto more = outboxmemory::withTransaction(known, field.second)) known = std::move(*more);
    return known;
}

} // namespace

namespace outboxmemory {

std::int64_t number(const std::optional<std::string>& text) {
    std::int64_t number = 0;
    if (text) std::from_chars(text->data(), text->data() + text->size(), number);
    return number;
}

// A form whose fields are named by place, with one digit each: decoded, they come in this order.
static_assert(keptTransactions <= 10);

std::optional<std::string> withTransaction(const std::optional<std::string>& known,
                                           const std::string& identifier) {
    std::vector<std::string> identifiers;
    for (const auto& field : formFields(known.value_or(""))) identifiers.push_back(field.second);
    if (std::find(identifiers.begin(), identifiers.end(), identifier) != identifiers.end())
        return std::nullopt;
    if (identifiers.size() == keptTransactions) identifiers.erase(identifiers.begin());
    identifiers.push_back(identifier);
    std::string text;
    for (std::size_t place = 0; place < identifiers.size(); ++place)
        appendFormField(text, std::to_string(place), identifiers[place]);
    return text;
}

std::string merged(std::string_view name, const std::optional<std::string>& filed,
                   const std::string& unwritten) {
    if (name == transactions) return withTransactions(filed.value_or(""), unwritten);
    if (name == sessions && number(filed) > number(unwritten)) return *filed;
    return unwritten;
}

} // namespace outboxmemory

const StateFormat OutboxFile::format = {
    .applicationIdentifier = 0x43564F42, // "CVOB"
    .version = 1,
    .content = "attribution packages",
    .tables =
        "CREATE TABLE packages (number INTEGER PRIMARY KEY, identifier BLOB NOT NULL, kind TEXT NOT NULL,"
        " state TEXT NOT NULL DEFAULT 'waiting', tries INTEGER NOT NULL DEFAULT 0, status INTEGER,"
        " answer BLOB, form BLOB NOT NULL) STRICT;"
        "CREATE TABLE memory (name BLOB PRIMARY KEY NOT NULL, value BLOB NOT NULL) STRICT, WITHOUT ROWID",
    .query = "SELECT number, identifier, kind, state, tries, status, answer, form, name, value"
             " FROM packages, memory"};

// Every parameter is a blob; texts and integers are cast from theirs.
OutboxFile::OutboxFile(std::unique_ptr<SqliteDatabase> database)
    : database_(std::move(database)),
      add_{adding(*database_, PackageKind::session), adding(*database_, PackageKind::event),
           adding(*database_, PackageKind::subscription)},
      addOnce_(
          database_->prepare("INSERT INTO packages (identifier, kind, form) SELECT ?1, CAST(?2 AS TEXT), ?3"
                             " WHERE NOT EXISTS (SELECT 1 FROM packages WHERE identifier = ?1)")),
      record_(recording(*database_, "number = CAST(?7 AS INTEGER)")),
      recordUnnumbered_(recording(*database_, "?7 = x'30'")),
      prune_(database_->prepare(
          "DELETE FROM packages WHERE number <= CAST(?1 AS INTEGER) AND state <> 'waiting'")),
      firstWaiting_(reading(*database_, "WHERE number > CAST(?1 AS INTEGER) AND state = 'waiting'"
                                        " ORDER BY number LIMIT 1")),
      newest_(reading(*database_, "ORDER BY number DESC LIMIT 1")),
      all_(reading(*database_, "ORDER BY number")),
      allFromEnd_(reading(*database_, "WHERE number > CAST(?1 AS INTEGER) ORDER BY number DESC")),
      value_(database_->prepare("SELECT value FROM memory WHERE name = ?1")),
      setValue_(database_->prepare("INSERT INTO memory VALUES (?1, ?2)"
                                   " ON CONFLICT (name) DO UPDATE SET value = excluded.value")) {}

void OutboxFile::add(const OutboxPackage& package) {
    add_.at(static_cast<std::size_t>(package.kind)).run({package.identifier, package.form}).next();
}

void OutboxFile::addOnce(const OutboxPackage& package) {
    addOnce_.run({package.identifier, nameOf(kindNames, package.kind), package.form}).next();
    if (package.tries > 0) record(package);
}

void OutboxFile::record(const OutboxPackage& package) {
    const auto& answer = package.lastAnswer.value();
    const auto& statement = package.number != 0 ? record_ : recordUnnumbered_;
    statement
        .run({package.identifier, nameOf(stateNames, package.state), std::to_string(package.tries),
              answer.status ? std::to_string(*answer.status) : "", answer.text, std::to_string(keptBytes),
              std::to_string(package.number)})
        .next();
    if (package.state == PackageState::waiting) return;
    // Those before it have been delivered as well: numbers go up in the order of delivery.
    delivered_ = std::max(delivered_, package.number);
    if (package.number > keptPackages) prune_.run({std::to_string(package.number - keptPackages)}).next();
}

std::optional<OutboxPackage> OutboxFile::firstWaiting(std::int64_t after) const {
    const auto number = std::to_string(std::max(after, delivered_));
    return onePackage(firstWaiting_.run({number}));
}

std::optional<OutboxPackage> OutboxFile::newest() const { return onePackage(newest_.run()); }

std::vector<OutboxPackage> OutboxFile::packages() const {
    std::vector<OutboxPackage> found;
    append(found, all_.run());
    return found;
}

std::vector<OutboxPackage> OutboxFile::readablePackages() const {
    std::vector<OutboxPackage> found, fromEnd;
    try {
        append(found, all_.run());
        return found;
    } catch (const SqliteError&) {
        // A damaged page: the rest is behind it.
    }
    try {
        const auto last = std::to_string(found.empty() ? 0 : found.back().number);
        append(fromEnd, allFromEnd_.run({last}));
    } catch (const SqliteError&) {
        // The same page again.
    }
    found.insert(found.end(), std::make_move_iterator(fromEnd.rbegin()),
                 std::make_move_iterator(fromEnd.rend()));
    return found;
}

std::optional<std::string> OutboxFile::value(std::string_view name) const {
    auto run = value_.run({name});
    if (!run.next()) return std::nullopt;
    return std::string(run.bytes(0));
}

void OutboxFile::setValue(std::string_view name, std::string_view value) {
    setValue_.run({name, value}).next();
}

void takeOverPackages(const std::filesystem::path& damaged, SqliteDatabase& fresh) try {
    const OutboxFile former(openUncheckedState(damaged, OutboxFile::format));
    const auto add = fresh.prepare(
        "INSERT INTO packages (identifier, kind, state, tries, status, answer, form)"
        " VALUES (?1, CAST(?2 AS TEXT), CAST(?3 AS TEXT), CAST(?4 AS INTEGER), CAST(?5 AS INTEGER), ?6, ?7)");
    for (const auto& package : former.readablePackages()) {
        const auto answer = package.lastAnswer.value_or(DeliveryAnswer());
        add.run({package.identifier, nameOf(kindNames, package.kind), nameOf(stateNames, package.state),
                 std::to_string(package.tries), std::to_string(answer.status.value_or(0)), answer.text,
                 package.form})
            .next();
    }
    const auto set = fresh.prepare("INSERT INTO memory VALUES (?1, ?2)");
    for (const auto name : outboxmemory::all)
        if (const auto value = former.value(name)) set.run({name, *value}).next();
} catch (const SqliteError& error) {
    if (error.mayPass()) throw; // what else it is can be read no further
}

OutboxInspection inspectOutbox(const std::filesystem::path& file) {
    OutboxInspection inspection;
    inspection.setAside = quarantinedFiles(file);
    if (isStateMissing(file)) return inspection;
    auto [database, fault] = inspectState(file, OutboxFile::format);
    inspection.fault = std::move(fault);
    if (!database) return inspection;
    for (const auto& package : OutboxFile(std::move(database)).readablePackages())
        inspection.packages.push_back(entryOf(package));
    return inspection;
}

} // namespace corvantile
