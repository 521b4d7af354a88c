#include "Platform/Ads/AAAttribution.hpp"
#include "Platform/Ads/ASIdentifierManager.hpp"
#include "Platform/Foundation/NSError.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gtest/gtest.h>

#include <string>

namespace corvantile {
namespace {

template <class Harness>
class AdsContract : public PortContract<Harness> {};
TYPED_TEST_SUITE(AdsContract, Harnesses);

TYPED_TEST(AdsContract, GivesWhatTheDeviceHas) {
    EXPECT_EQ(ASIdentifierManager::shared()->advertisingIdentifier(),
              ASIdentifierManager::withheldIdentifier);

    this->harness().setAds("dG9rZW4=", "6D92078A-8246-4BA4-AE5B-76104861E7DC");

    EXPECT_EQ(AAAttribution::attributionToken(), "dG9rZW4=");
    EXPECT_EQ(ASIdentifierManager::shared()->advertisingIdentifier(), "6D92078A-8246-4BA4-AE5B-76104861E7DC");
}

TYPED_TEST(AdsContract, SaysWhyThereIsNoToken) {
    this->harness().setAds(AAAttributionFailure::networkError);

    try {
        const auto token = AAAttribution::attributionToken();
        FAIL() << token;
    } catch (const NSError& error) {
        EXPECT_EQ(error.domain(), attributionErrorDomain);
        EXPECT_EQ(error.code(), static_cast<int>(AAAttributionFailure::networkError));
    }
}

} // namespace
} // namespace corvantile
