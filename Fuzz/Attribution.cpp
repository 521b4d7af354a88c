#include "Corvantile/Plugin/AdNetwork/AdNetworkPlugin.hpp"
#include "Fuzz/RoundTrip.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return corvantile::fuzz::roundTrip<corvantile::AdNetworkAttributionPayload>(data, size);
}
