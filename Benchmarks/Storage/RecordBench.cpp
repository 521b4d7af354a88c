#include "Benchmarks/Storage/Turns.hpp"
#include "Corvantile/Extension/AESText.hpp"
#include "DesktopPlatform/DesktopPlatform.hpp"
#include "DesktopPlatform/Foundation/SQLiteUserDefaults.hpp"
#include "Platform/Foundation/Console.hpp"
#include "Platform/Security/Cryptor.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <openssl/evp.h>
#include <sqlite3.h>

// The road of a record: text, cipher, base64 in lines, user defaults. Each floor calls the same libraries
// directly, with everything kept that can be, and leaves out whatever a single caller could do without.

namespace {

using namespace corvantile;

const std::string key = "kT1vZ0uQmXc9Yb7w";
const std::string iv = "2uHc9ZsRwJ7pLA==";
const std::string name = "appconfig_Setting_C0FFEE00-ABCD-4EF0-8123-000000000001";
const std::string record(200, 'r');

// AES-128-CBC and base64 in lines, for texts of one size.
class FloorCodec {
public:
    FloorCodec() {
        const auto* const cipher = EVP_aes_128_cbc();
        EVP_CipherInit_ex2(seal_, cipher, bytes(key.data()), nullptr, 1, nullptr);
        EVP_CipherInit_ex2(open_, cipher, bytes(key.data()), nullptr, 0, nullptr);
        values_.fill(64);
        for (unsigned char i = 0; i < 64; ++i) values_[static_cast<unsigned char>(alphabet[i])] = i;
    }
    FloorCodec(const FloorCodec&) = delete;
    FloorCodec& operator=(const FloorCodec&) = delete;
    ~FloorCodec() {
        EVP_CIPHER_CTX_free(seal_);
        EVP_CIPHER_CTX_free(open_);
    }

    std::string seal(std::string_view text) {
        const auto size = run(seal_, text.data(), text.size());
        std::string out((size + 2) / 3 * 4 + ((size + 2) / 3 * 4 - 1) / 64 * 2, '\0');
        char* to = out.data();
        std::size_t at = 0;
        for (std::size_t groups = 0; at + 3 <= size; at += 3, ++groups) {
            if (groups == 16) {
                *to++ = '\r';
                *to++ = '\n';
                groups = 0;
            }
            const unsigned bits = buffer_[at] * 65536U + buffer_[at + 1] * 256U + buffer_[at + 2];
            for (int shift = 18; shift >= 0; shift -= 6) *to++ = alphabet[bits >> shift & 63U];
        }
        if (at < size) {
            const unsigned bits = buffer_[at] * 65536U + (at + 1 < size ? buffer_[at + 1] * 256U : 0U);
            *to++ = alphabet[bits >> 18];
            *to++ = alphabet[bits >> 12 & 63U];
            *to++ = at + 1 < size ? alphabet[bits >> 6 & 63U] : '=';
            *to++ = '=';
        }
        return out;
    }

    std::string open(std::string_view text) {
        std::array<char, 1024> sealed{};
        std::size_t size = 0;
        unsigned bits = 0;
        for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
            if (text[at] == '\r') at += 2;
            for (std::size_t i = 0; i < 4; ++i)
                bits = bits << 6 | (values_[static_cast<unsigned char>(text[at + i])] & 63U);
            sealed[size++] = static_cast<char>(bits >> 16);
            sealed[size++] = static_cast<char>(bits >> 8);
            sealed[size++] = static_cast<char>(bits);
        }
        size -= static_cast<std::size_t>(std::count(text.end() - 2, text.end(), '='));
        const auto opened = run(open_, sealed.data(), size);
        return {reinterpret_cast<const char*>(buffer_.data()), opened};
    }

private:
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    static const unsigned char* bytes(const char* text) {
        return reinterpret_cast<const unsigned char*>(text);
    }

    std::size_t run(EVP_CIPHER_CTX* context, const char* text, std::size_t size) {
        int written = 0;
        int rest = 0;
        EVP_CipherInit_ex2(context, nullptr, nullptr, bytes(iv.data()), -1, nullptr);
        EVP_CipherUpdate(context, buffer_.data(), &written, bytes(text), static_cast<int>(size));
        EVP_CipherFinal_ex(context, buffer_.data() + written, &rest);
        return static_cast<std::size_t>(written + rest);
    }

    EVP_CIPHER_CTX* const seal_ = EVP_CIPHER_CTX_new();
    EVP_CIPHER_CTX* const open_ = EVP_CIPHER_CTX_new();
    std::array<unsigned char, 256> values_{};
    std::array<unsigned char, 1024> buffer_{};
};

class FloorStore {
public:
    explicit FloorStore(const std::filesystem::path& file) {
        if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK) throw std::runtime_error("No database");
        run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 0;"
            "CREATE TABLE defaults (key BLOB PRIMARY KEY, value) WITHOUT ROWID");
        sqlite3_prepare_v2(
            database_,
            "INSERT INTO defaults VALUES (?1, ?2) ON CONFLICT DO UPDATE SET value = excluded.value", -1,
            &put_, nullptr);
    }
    FloorStore(const FloorStore&) = delete;
    FloorStore& operator=(const FloorStore&) = delete;
    ~FloorStore() {
        sqlite3_finalize(put_);
        sqlite3_close(database_);
    }

    void run(const char* statements) { sqlite3_exec(database_, statements, nullptr, nullptr, nullptr); }
    void put(const std::string& value) {
        sqlite3_bind_blob(put_, 1, name.data(), static_cast<int>(name.size()), SQLITE_STATIC);
        sqlite3_bind_blob(put_, 2, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
        if (sqlite3_step(put_) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database_));
        sqlite3_reset(put_);
    }

private:
    sqlite3* database_ = nullptr;
    sqlite3_stmt* put_ = nullptr;
};

class SilentConsole final : public Console {
public:
    void print(std::string_view) override {}
};

// The framework's own codec wants a platform; this one's state is never looked at.
struct Framework {
    const Company company;
    const TemporaryFolder folder;
    DesktopPlatform platform{{.stateFolder = folder.path() / "state"}};
    FloorCodec floor;
};

constexpr int batch = 200;

void Seal(benchmark::State& state) {
    Framework framework;
    Turns turns;
    if (aesEncrypt(record, key, iv, 1) != framework.floor.seal(record)) state.SkipWithError("They differ");
    for (auto _ : state)
        turns.take(
            state, [&] { benchmark::DoNotOptimize(framework.floor.seal(record)); },
            [&] { benchmark::DoNotOptimize(aesEncrypt(record, key, iv, 1)); }, batch);
    turns.report(state);
}

void Open(benchmark::State& state) {
    Framework framework;
    Turns turns;
    const auto sealed = framework.floor.seal(record);
    if (framework.floor.open(sealed) != record) state.SkipWithError("They differ");
    for (auto _ : state)
        turns.take(
            state, [&] { benchmark::DoNotOptimize(framework.floor.open(sealed)); },
            [&] { benchmark::DoNotOptimize(aesDecrypt(sealed, key, iv, 1)); }, batch);
    turns.report(state);
}

void Get(benchmark::State& state) {
    Framework framework;
    Turns turns;
    auto& defaults = *framework.platform.ports().userDefaults;
    std::map<std::string, std::string, std::less<>> values{{name, framework.floor.seal(record)}};
    for (int number = 0; number < 20; ++number) values["appconfig_" + std::to_string(number)] = "value";
    for (const auto& [storedKey, value] : values) defaults.setValue(value, storedKey);
    for (auto _ : state)
        turns.take(
            state, [&] { benchmark::DoNotOptimize(framework.floor.open(values.find(name)->second)); },
            [&] { benchmark::DoNotOptimize(aesDecrypt(*defaults.stringForKey(name), key, iv, 1)); }, batch);
    turns.report(state);
}

// Each text differs from the last: SQLite writes nothing for what is there already. Both logs are emptied
// between the turns.
void Set(benchmark::State& state) {
    Framework framework;
    Turns turns;
    std::function<void()> emptyLog = [] {};
    SQLiteUserDefaults defaults(
        {.file = framework.folder.path() / "defaults.sqlite",
         .console = std::make_shared<SilentConsole>(),
         .inBackground = [&](std::function<void()> work) { emptyLog = std::move(work); }});
    FloorStore floor(framework.folder.path() / "floor.sqlite");
    int number = 0;
    const auto next = [&] { return std::to_string(1'000'000 + ++number) + record.substr(7); };
    defaults.setValue("the file is open now", name);
    floor.put("the same");
    for (auto _ : state) {
        turns.take(
            state, [&] { floor.put(framework.floor.seal(next())); },
            [&] { defaults.setValue(aesEncrypt(next(), key, iv, 1), name); }, batch);
        floor.run("PRAGMA wal_checkpoint(PASSIVE); PRAGMA user_version = 1");
        emptyLog();
    }
    turns.report(state);
}

void OpenAndReadOne(benchmark::State& state) {
    const Company company;
    const TemporaryFolder folder;
    const UserDefaultsOptions options{.file = folder.path() / "defaults.sqlite",
                                      .console = std::make_shared<SilentConsole>(),
                                      .inBackground = {}};
    {
        SQLiteUserDefaults defaults(options);
        for (int number = 0; number < 50; ++number)
            defaults.setValue(std::string(280, 'v'), std::to_string(number));
    }
    for (auto _ : state) benchmark::DoNotOptimize(SQLiteUserDefaults(options).stringForKey("7"));
}

} // namespace

BENCHMARK(Seal)->UseManualTime()->Iterations(1000);
BENCHMARK(Open)->UseManualTime()->Iterations(1000);
BENCHMARK(Get)->UseManualTime()->Iterations(1000);
BENCHMARK(Set)->UseManualTime()->Iterations(100);
BENCHMARK(OpenAndReadOne)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
