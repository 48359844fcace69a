#include "oru/hex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(HexDigit, IsItsNumberAndAnythingElseIsZero) {
    const std::string lower = "0123456789abcdef";
    const std::string upper = "0123456789ABCDEF";
    for (int32_t c = 0; c < 256; ++c) {
        int32_t expected = 0;
        for (size_t digit = 0; digit < 16; ++digit) {
            if (c == lower[digit] || c == upper[digit])
                expected = static_cast<int32_t>(digit);
        }
        EXPECT_EQ(oru_util_ctoh(c), expected) << c;
    }
}

TEST(HexDigit, KeepsTheBitsAboveTheLowByte) {
    EXPECT_EQ(oru_util_ctoh(0x41424300 | 'f'), 0x4142430f);
    EXPECT_EQ(oru_util_ctoh(0x100 | 'z'), 0x100);
    EXPECT_EQ(oru_util_ctoh(-256 + 'a'), -256 + 10);
}

std::string bytes_of(const char *text, int32_t n) {
    char out[16];
    std::memset(out, '#', sizeof out);
    const int32_t count = oru_util_strtoh(text, n, out);
    EXPECT_EQ(out[count], '#') << "wrote past the count";
    return {out, static_cast<size_t>(count)};
}

TEST(HexText, BecomesBytesPairByPair) {
    EXPECT_EQ(bytes_of("00fFa1", 6), (std::string{"\x00\xff\xa1", 3}));
    EXPECT_EQ(bytes_of("zz", 2), (std::string{"\x00", 1}));
    EXPECT_EQ(bytes_of("g1", 2), "\x01");
}

TEST(HexText, HasNoBytesBelowAPair) {
    EXPECT_EQ(bytes_of("ab", 1), "");
    EXPECT_EQ(bytes_of("ab", 0), "");
    EXPECT_EQ(bytes_of("ab", -4), "");
}

TEST(HexText, StopsAtItsCountOrAZeroAtEitherPlace) {
    EXPECT_EQ(bytes_of("414243", 4), "AB");
    EXPECT_EQ(bytes_of("414243", 5), "AB");
    EXPECT_EQ(bytes_of("4142", 10), "AB");
    EXPECT_EQ(bytes_of("41424", 10), "AB");
}

}  // namespace
