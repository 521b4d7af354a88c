#include "CorvantileDesktop/Adjust/detail/UnwrittenPackages.hpp"

#include <algorithm>
#include <cstddef>

namespace corvantile {

namespace {

bool isWaiting(const OutboxPackage& package) { return package.state == PackageState::waiting; }

} // namespace

void UnwrittenPackages::add(OutboxChange change) {
    for (auto& package : change.packages) packages_.push_back(std::move(package));
    change.values.merge(values_);
    values_ = std::move(change.values);
}

bool UnwrittenPackages::record(const OutboxPackage& package) {
    const auto found = std::find_if(packages_.begin(), packages_.end(), [&](const OutboxPackage& one) {
        return one.identifier == package.identifier;
    });
    if (found == packages_.end()) return false;
    *found = package;
    if (isWaiting(package)) return true;
    found->form.resize(std::min(package.form.size(), OutboxFile::keptBytes));
    // Those before it have been delivered as well.
    constexpr std::size_t kept = OutboxFile::keptPackages;
    while (packages_.size() > kept && !isWaiting(packages_[kept])) packages_.pop_front();
    return true;
}

std::optional<OutboxPackage> UnwrittenPackages::firstWaiting() const {
    const auto found = std::find_if(packages_.begin(), packages_.end(), isWaiting);
    if (found == packages_.end()) return std::nullopt;
    return *found;
}

std::optional<std::string> UnwrittenPackages::value(std::string_view name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

bool UnwrittenPackages::hasDelivered(const OutboxPackage& package) const {
    return std::any_of(attempts_.begin(), attempts_.end(), [&](const OutboxPackage& one) {
        return one.identifier == package.identifier && !isWaiting(one);
    });
}

void UnwrittenPackages::writeTo(OutboxFile& file) {
    file.transact([&] {
        for (const auto& package : attempts_) file.record(package);
        for (const auto& package : packages_) file.addOnce(package);
        for (const auto& [name, value] : values_)
            file.setValue(name, outboxmemory::merged(name, file.value(name), value));
    });
    *this = UnwrittenPackages();
}

} // namespace corvantile
