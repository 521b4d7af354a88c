#pragma once

#include "Corvantile/Plugin/AdNetwork/AdNetworkPluggable.hpp"
#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantileReactive/DisposeBag.hpp"
#include "CorvantileReactive/Observable.hpp"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvantile::tool {

// An element of a stream, for people and for programs.
struct Publication {
    std::string text;
    EventValue value;
};

// Reports every element of a plug-in's streams until the bag is disposed. Borrows the reporter and the bag.
class Follower {
public:
    Follower(std::string plugIn, PlayReporter& reporter, rx::DisposeBag& bag)
        : plugIn_(std::move(plugIn)), reporter_(reporter), bag_(bag) {}

    // `publicationOf` makes a Publication of an element.
    template <class T, class Describe>
    void follow(const std::string& stream, const rx::Observable<T>& observable, Describe publicationOf) {
        bag_.insert(observable.subscribe([stream, plugIn = plugIn_, &reporter = reporter_,
                                          publicationOf](const T& element) {
            Publication publication = publicationOf(element);
            reporter.report("plugin", "published", plugIn + " publishes " + stream + ": " + publication.text,
                            {{"plugin", plugIn}, {"stream", stream}, {"value", publication.value}});
        }));
    }

private:
    const std::string plugIn_;
    PlayReporter& reporter_;
    rx::DisposeBag& bag_;
};

// The framework's own kinds. They use the registry as a host does.
void addCoreKinds(PlayRegistry& registry);
void addStorageKinds(PlayRegistry& registry);
void addAttributionKinds(PlayRegistry& registry);
void addPurchaseKinds(PlayRegistry& registry);

// For a plug-in without configuration.
template <class PlugIn>
[[nodiscard]] PlayRegistry::MakePlugIn readPlain(const PlayConfiguration& configuration) {
    configuration.allow({});
    return [](const PlayRegistry::LaunchSwitches&) { return std::make_shared<PlugIn>(); };
}

// The products of an IAPReceiptPlugin's configuration.
[[nodiscard]] std::vector<IAPReceiptPlugin::Product>
readReceiptProducts(const PlayConfiguration& configuration);

// What a launch knows of the search-ads campaign.
[[nodiscard]] Publication publicationOf(const AdNetworkInfo& info);

} // namespace corvantile::tool
