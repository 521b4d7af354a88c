#include "CorvantilePlay/detail/Receipts/ReportedBefore.hpp"

#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>

namespace corvantile::tool {

namespace {

// As analytics does: an entry with a value of another kind is no marker.
bool isMarker(const KeychainDictionary& entry) {
    return std::all_of(entry.begin(), entry.end(),
                       [](const auto& member) { return member.second.template as<bool>() != nullptr; });
}

std::optional<Date> firstDateIn(const VaultInspection::Entry& entry) {
    if (entry.account != "firstDate") return std::nullopt;
    const auto found = entry.dictionary->find("firstDate");
    const auto* const date = found == entry.dictionary->end() ? nullptr : found->second.as<Date>();
    return date == nullptr ? std::nullopt : std::optional(*date);
}

} // namespace

ReportedBefore reportedBefore(const std::filesystem::path& stateFolder) {
    const StateCopy state(stateFolder);
    if (const auto fault = state.faultOf("keychain"); !fault.empty())
        throw UsageError(stateFolder.string() + ": the keychain: " + fault);
    ReportedBefore before;
    for (const auto& entry : Vault({.folder = state.keychain()}).inspect().entries) {
        if (!entry.dictionary) continue;
        if (isMarker(*entry.dictionary)) before.marked.insert(entry.account);
        if (const auto date = firstDateIn(entry)) before.firstDate = date;
    }
    return before;
}

} // namespace corvantile::tool
