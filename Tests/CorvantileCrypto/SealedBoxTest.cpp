#include "CorvantileCrypto/SealedBox.hpp"

#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile::SealedBoxTest {

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

// AES-256-GCM test case 16 of the mode's original publication.
TEST(SealedBox, OpensThePublishedExample) {
    const auto publishedKey = "\xfe\xff\xe9\x92\x86\x65\x73\x1c\x6d\x6a\x8f\x94\x67\x30\x83\x08"
                              "\xfe\xff\xe9\x92\x86\x65\x73\x1c\x6d\x6a\x8f\x94\x67\x30\x83\x08"s;
    const auto nonce = "\xca\xfe\xba\xbe\xfa\xce\xdb\xad\xde\xca\xf8\x88"s;
    const auto ciphertext = "\x52\x2d\xc1\xf0\x99\x56\x7d\x07\xf4\x7f\x37\xa3\x2a\x84\x42\x7d"
                            "\x64\x3a\x8c\xdc\xbf\xe5\xc0\xc9\x75\x98\xa2\xbd\x25\x55\xd1\xaa"
                            "\x8c\xb0\x8e\x48\x59\x0d\xbb\x3d\xa7\xb0\x8b\x10\x56\x82\x88\x38"
                            "\xc5\xf6\x1e\x63\x93\xba\x7a\x0a\xbc\xc9\xf6\x62"s;
    const auto tag = "\x76\xfc\x6e\xce\x0f\x4e\x17\x68\xcd\xdf\x88\x53\xbb\x2d\x55\x1b"s;
    const auto associatedData =
        "\xfe\xed\xfa\xce\xde\xad\xbe\xef\xfe\xed\xfa\xce\xde\xad\xbe\xef\xab\xad\xda\xd2"s;

    EXPECT_EQ(SealedBox::open(publishedKey, nonce + ciphertext + tag, associatedData),
              "\xd9\x31\x32\x25\xf8\x84\x06\xe5\xa5\x59\x09\xc5\xaf\xf5\x26\x9a"
              "\x86\xa7\xa9\x53\x15\x34\xf7\xda\x2e\x4c\x30\x3d\x8a\x31\x8a\x72"
              "\x1c\x3c\x0c\x95\x95\x68\x09\x53\x2f\xcf\x0e\x24\x49\xa6\xb5\x25"
              "\xb1\x6a\xed\xf5\xaa\x0d\xe6\x57\xba\x63\x7b\x39"s);
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

} // namespace corvantile::SealedBoxTest
