#include "Tessarune/audio/WAVHeader.h"
#include "tests/support/WAVBytes.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using testing::wavBytes;

TEST(WAVHeaderTests, EncodesTheUsualHeaderAndDecodesIt) {
    for (const std::uint16_t channels : {std::uint16_t{1}, std::uint16_t{2}}) {
        WAVHeader header{.sampleRate = 48000, .channels = channels, .dataSize = 8};
        EXPECT_EQ(header.encoded(), wavBytes({1, 2, 3, 4}, 48000, channels).substr(0, 44));
        EXPECT_EQ(WAVHeader::decoded(header.encoded()), header);
    }
    const WAVHeader huge{.sampleRate = 48000, .dataSize = 5'000'000'000};
    EXPECT_EQ(WAVHeader::decoded(huge.encoded())->dataSize, 0xFFFFFFFFU) << "a size has 32 bits";
    EXPECT_EQ(huge.encoded().substr(4, 4), "\xFF\xFF\xFF\xFF");
}

TEST(WAVHeaderTests, SkipsOtherChunksAndRefusesDamagedHeaders) {
    const std::string plain = wavBytes({1, 2, 3, 4}, 16000);
    const std::string list("LIST\x03\0\0\0abc\0", 12);
    const auto found = WAVHeader::decoded(plain.substr(0, 36) + list + plain.substr(36));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->dataOffset, 44U + 12U);
    EXPECT_EQ(found->dataSize, 8U);

    const struct {
        std::size_t at;
        std::string bytes;
    } lies[] = {{0, "RIFX"},
                {8, "AVI "},
                {12, "fmt_"},
                {16, std::string("\x0F\0\0\0", 4)},
                {16, "\xFF\xFF\xFF\xFF"},
                {20, std::string("\3\0", 2)},
                {22, std::string("\0\0", 2)},
                {22, "\xFF\xFF"},
                {24, std::string("\0\0\0\0", 4)},
                {24, "\xFF\xFF\xFF\xFF"},
                {34, std::string("\x08\0", 2)},
                {36, "dat_"}};
    for (const auto& lie : lies) {
        std::string damaged = plain;
        damaged.replace(lie.at, lie.bytes.size(), lie.bytes);
        EXPECT_FALSE(WAVHeader::decoded(damaged)) << "damaged at byte " << lie.at;
    }
    for (std::size_t size = 0; size < 44; ++size)
        EXPECT_FALSE(WAVHeader::decoded(plain.substr(0, size))) << "cut after byte " << size;
}

} // namespace
} // namespace tessarune
