#include "Platform/Foundation/NSBundle.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace corvantile {
namespace {

template <class Harness>
class NSBundleContract : public PortContract<Harness> {};
TYPED_TEST_SUITE(NSBundleContract, Harnesses);

TYPED_TEST(NSBundleContract, NamesItsAppAndReadsItsResourcesByteForByte) {
    const auto bundle = NSBundle::main();

    EXPECT_EQ(bundle->bundleIdentifier(), contractBundle);
    EXPECT_EQ(bundle->resource(contractResourceName, contractResourceExtension), contractResource);
}

TYPED_TEST(NSBundleContract, HasNoOtherResource) {
    const struct {
        std::string_view name, extension;
    } cases[] = {{"Sample", "txt"}, {"Sample", ""}, {"sample", "bin"},
                 {"Other", "bin"},  {"", ""},       {"..", ""}};

    for (const auto& [name, extension] : cases)
        EXPECT_EQ(NSBundle::main()->resource(name, extension), std::nullopt) << name << "." << extension;
}

} // namespace
} // namespace corvantile
