#include "CorvantileDesktop/Foundation/detail/DefaultsMirror.hpp"

#include <string>
#include <utility>

namespace corvantile {

namespace {

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

DefaultsMirror::DefaultsMirror(std::filesystem::path path, std::shared_ptr<Console> console,
                               BackgroundRunner inBackground)
    : file_({.path = std::move(path),
             .console = std::move(console),
             .inBackground = std::move(inBackground),
             .subject = "User defaults",
             .lossPrefix = "began anew",
             .lossSuffix = "",
             // Everything that this process knows is worth saving.
             .onDamage =
                 [this] {
                     for (const auto& [key, value] : values_) unwritten_.try_emplace(key, value);
                 },
             .fill = nullptr}) {}

void DefaultsMirror::set(std::string_view key, std::optional<NSUserDefaults::Value> value) {
    apply(value, key, values_);
    if (file_.path().empty()) return;
    const bool wasBehind = isBehind();
    if (!wasBehind && file_.attempt([&](DefaultsFile& file) { file.write(key, value); })) return;
    unwritten_.insert_or_assign(std::string(key), std::move(value));
    if (wasBehind || file_.get() == nullptr) catchUp();
}

void DefaultsMirror::refresh() {
    if (file_.path().empty()) return;
    if (isBehind()) {
        if (!file_.isPaused()) catchUp();
        return;
    }
    if (file_.hasMoved()) {
        catchUp();
        return;
    }
    const bool isRead = file_.attempt([this](DefaultsFile& file) {
        if (file.hasChangedElsewhere()) values_ = file.load();
    });
    if (!isRead && file_.get() == nullptr) catchUp();
}

bool DefaultsMirror::catchUp() {
    const bool hasEverything = file_.catchUp([this](DefaultsFile& file) { load(file); },
                                             [this](DefaultsFile& file) {
                                                 if (!unwritten_.empty()) file.write(unwritten_);
                                             });
    if (hasEverything) unwritten_.clear();
    return hasEverything;
}

bool DefaultsMirror::isBehind() const {
    return !file_.path().empty() && (file_.get() == nullptr || !unwritten_.empty());
}

void DefaultsMirror::load(DefaultsFile& file) {
    values_ = file.load();
    for (const auto& [key, change] : unwritten_) apply(change, key, values_);
}

} // namespace corvantile
