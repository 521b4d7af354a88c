#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <sqlite3.h>

namespace corvantile {

// SQLite and nothing around it, for the floors.
class PlainDatabase {
public:
    using Statement = sqlite3_stmt*; // lasts as long as the database

    PlainDatabase(const std::filesystem::path& file, const char* setup) {
        if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK) throw std::runtime_error("No database");
        run(setup);
    }
    PlainDatabase(const PlainDatabase&) = delete;
    PlainDatabase& operator=(const PlainDatabase&) = delete;
    ~PlainDatabase() {
        for (auto* const statement : statements_) sqlite3_finalize(statement);
        sqlite3_close(database_);
    }

    void run(const char* statements) { sqlite3_exec(database_, statements, nullptr, nullptr, nullptr); }

    [[nodiscard]] Statement prepare(const char* text) {
        sqlite3_prepare_v2(database_, text, -1, &statements_.emplace_back(), nullptr);
        return statements_.back();
    }

    void write(Statement statement, std::string_view first, std::string_view second) {
        bind(statement, 1, first);
        bind(statement, 2, second);
        if (sqlite3_step(statement) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database_));
        sqlite3_reset(statement);
    }

    // The first column; empty where there is no row.
    [[nodiscard]] std::string read(Statement statement, std::string_view key) {
        bind(statement, 1, key);
        std::string value;
        if (sqlite3_step(statement) == SQLITE_ROW)
            value.assign(static_cast<const char*>(sqlite3_column_blob(statement, 0)),
                         static_cast<std::size_t>(sqlite3_column_bytes(statement, 0)));
        sqlite3_reset(statement);
        return value;
    }

private:
    static void bind(Statement statement, int place, std::string_view bytes) {
        sqlite3_bind_blob(statement, place, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
    }

    sqlite3* database_ = nullptr;
    std::vector<Statement> statements_;
};

} // namespace corvantile
