#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxFile.hpp"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvantile {

// What an outbox keeps in memory alone, because its file refuses it or it has no file. Packages may be
// delivered from here. Threads: one at a time.
class UnwrittenPackages {
public:
    [[nodiscard]] bool isEmpty() const { return packages_.empty() && values_.empty() && attempts_.empty(); }

    void add(OutboxPackage package) { packages_.push_back(std::move(package)); }
    void add(OutboxChange change);
    // Stores the result of an attempt to deliver. Of delivered packages, the last OutboxFile::keptPackages
    // stay. False when the package is not here.
    bool record(const OutboxPackage& package);
    // The same for a package in the file, which cannot be written now.
    void addAttempt(OutboxPackage package) { attempts_.push_back(std::move(package)); }

    [[nodiscard]] const std::deque<OutboxPackage>& packages() const { return packages_; }
    [[nodiscard]] std::optional<OutboxPackage> firstWaiting() const;
    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
    // True when it was delivered, though the file has it waiting.
    [[nodiscard]] bool hasDelivered(const OutboxPackage& package) const;

    // Moves everything into the file, or throws SqliteError and nothing is changed.
    void writeTo(OutboxFile& file);

private:
    std::deque<OutboxPackage> packages_;
    std::map<std::string, std::string, std::less<>> values_;
    std::vector<OutboxPackage> attempts_;
};

} // namespace corvantile
