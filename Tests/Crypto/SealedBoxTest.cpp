#include "Crypto/SealedBox.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace corvantile {
namespace {

using namespace std::string_literals;

const std::string key(SealedBox::keySize, 'k');

TEST(SealedBox, GivesBackWhatWasSealedNeverTheSameWayTwice) {
    for (const auto& plaintext : {""s, "with\0NUL"s, std::string(100'000, 'p')}) {
        const auto box = SealedBox::seal(key, plaintext, "account\0service"s).value();

        EXPECT_EQ(box.size(), plaintext.size() + SealedBox::overhead);
        EXPECT_EQ(SealedBox::open(key, box, "account\0service"s), plaintext);
        EXPECT_NE(SealedBox::seal(key, plaintext, "account\0service"s), box);
    }
}

TEST(SealedBox, StaysShutWhenAnythingWasChangedOrIsMissing) {
    const auto box = SealedBox::seal(key, "secret", "data").value();
    for (std::size_t i = 0; i < box.size(); ++i) {
        auto changed = box;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        EXPECT_EQ(SealedBox::open(key, changed, "data"), std::nullopt) << "byte " << i;
        EXPECT_EQ(SealedBox::open(key, box.substr(0, i), "data"), std::nullopt) << "the first " << i;
    }
    EXPECT_EQ(SealedBox::open(key, box, "Data"), std::nullopt);
    for (const auto& wrong : {std::string(SealedBox::keySize, 'K'), ""s, key.substr(1), key + "k"})
        EXPECT_EQ(SealedBox::open(wrong, box, "data"), std::nullopt);
    EXPECT_EQ(SealedBox::seal(key.substr(1), "secret", ""), std::nullopt);
}

} // namespace
} // namespace corvantile
