#pragma once

#include "CorvantileDesktop/Adjust/detail/Outbox.hpp"
#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"
#include "CorvantileDesktop/Foundation/detail/DefaultsFile.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultFormat.hpp"
#include "CorvantileDesktop/Store/detail/StoreFile.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

// The files that processes share, each as one process sees it: `save` stores a text by its name, and `in`
// tells which ones a file holds.
namespace corvantile {

using Texts = std::map<std::string, std::string>;

struct TextsInVault {
    static constexpr const char* fileName = "vault.sqlite";
    TextsInVault(const std::filesystem::path& file, std::shared_ptr<Console> console)
        : vault({.folder = file.parent_path(), .console = std::move(console)}) {}
    void save(const std::string& name, const std::string& text) {
        vault.save({{"text", text}}, name, "com.example.app");
    }
    [[nodiscard]] bool holds(const std::string& name) const {
        return vault.load(name, "com.example.app").has_value();
    }
    static const StateFormat& format() { return vaultFormat; }
    static Texts in(const std::filesystem::path& file) {
        const auto inspection = Vault({.folder = file.parent_path()}).inspect();
        EXPECT_TRUE(inspection.faults.empty());
        Texts texts;
        for (const auto& [service, account, dictionary, fault] : inspection.entries)
            texts[account] = *dictionary.value().at("text").as<std::string>();
        return texts;
    }
    Vault vault;
};

struct TextsInUserDefaults {
    static constexpr const char* fileName = "user-defaults.sqlite";
    TextsInUserDefaults(const std::filesystem::path& file, std::shared_ptr<Console> console)
        : defaults({.file = file, .console = std::move(console), .inBackground = {}}) {}
    void save(const std::string& name, const std::string& text) { defaults.setValue(text, name); }
    [[nodiscard]] bool holds(const std::string& name) const { return defaults.valueForKey(name).has_value(); }
    static const StateFormat& format() { return DefaultsFile::format; }
    static Texts in(const std::filesystem::path& file) {
        const auto inspection = SQLiteUserDefaults::inspect(file);
        EXPECT_EQ(inspection.fault, "");
        Texts texts;
        for (const auto& [name, value] : inspection.values) texts[name] = std::get<std::string>(value);
        return texts;
    }
    SQLiteUserDefaults defaults;
};

struct TextsInStore {
    static constexpr const char* fileName = "store.sqlite";
    TextsInStore(const std::filesystem::path& file, std::shared_ptr<Console> console)
        : store({.file = file, .console = std::move(console), .inBackground = [](const auto&) {}}) {}
    void save(const std::string& name, const std::string& text) {
        do static_cast<void>(store.load());
        while (!store.commit({{name, text}}, {}));
    }
    [[nodiscard]] bool holds(const std::string& name) { return store.load().contains(name); }
    static const StateFormat& format() { return StoreFile::format; }
    static Texts in(const std::filesystem::path& file) {
        EXPECT_EQ(faultOfStoreFile(file), "");
        const auto rows = TextsInStore(file, nullptr).store.load();
        return {rows.begin(), rows.end()};
    }
    StoreFile store;
};

struct TextsInOutbox {
    static constexpr const char* fileName = "outbox.sqlite";
    TextsInOutbox(const std::filesystem::path& file, std::shared_ptr<Console> console)
        : outbox(file, std::move(console), {}) {}
    void save(const std::string& name, const std::string& text) {
        OutboxPackage package;
        package.identifier = name;
        package.form = "event_token=" + text;
        outbox.add(std::move(package));
        outbox.remember(outboxmemory::pushToken, name);
    }
    // Its packages wait, for another process might deliver them as well; what it remembers is known.
    [[nodiscard]] bool holds(const std::string&) {
        return outbox.remembered(outboxmemory::pushToken).has_value();
    }
    static const StateFormat& format() { return OutboxFile::format; }
    static Texts in(const std::filesystem::path& file) {
        const auto inspection = inspectOutbox(file);
        EXPECT_EQ(inspection.fault, "");
        Texts texts;
        for (const auto& package : inspection.packages) texts[package.identifier] = package.eventToken;
        return texts;
    }
    Outbox outbox;
};

} // namespace corvantile
