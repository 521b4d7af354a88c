#include "CorvantilePlay/PlayRegistry.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlay/detail/Kinds/Kinds.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

template <class Kind>
void addKind(std::vector<Kind>& kinds, Kind kind, std::string_view what) {
    const bool isKnown =
        std::any_of(kinds.begin(), kinds.end(), [&](const Kind& known) { return known.name == kind.name; });
    if (isKnown)
        fatalError("The registry already has a " + std::string(what) + " of the kind " + kind.name + ".");
    kinds.push_back(std::move(kind));
}

} // namespace

PlayReporter::~PlayReporter() = default;

PlayRegistry PlayRegistry::framework() {
    PlayRegistry registry;
    tool::addCoreKinds(registry);
    tool::addStorageKinds(registry);
    tool::addAttributionKinds(registry);
    tool::addPurchaseKinds(registry);
    return registry;
}

void PlayRegistry::addPlugIn(PlugInKind kind) { addKind(plugIns_, std::move(kind), "plug-in"); }
void PlayRegistry::addSink(SinkKind kind) { addKind(sinks_, std::move(kind), "sink"); }
void PlayRegistry::addRecord(RecordKind kind) { addKind(records_, std::move(kind), "record"); }

} // namespace corvantile
