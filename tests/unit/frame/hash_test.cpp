#include <gtest/gtest.h>

#include <string>

#include "oru/hashtable.h"
#include "tests/support/death.h"

namespace {

TEST(Hash, IsThePublishedOneForPlainText) {
    EXPECT_EQ(oru_hash_calculate("a", 1), 0xca2e9442u);
    EXPECT_EQ(oru_hash_str_calc("a"), 0xca2e9442u);
    EXPECT_EQ(oru_hash_str_calc("The quick brown fox jumps over the lazy dog"), 0x519e91f5u);
}

TEST(Hash, OfNothingIsZero) {
    EXPECT_EQ(oru_hash_calculate("abc", 0), 0u);
    EXPECT_EQ(oru_hash_calculate("abc", -1), 0u);
    EXPECT_EQ(oru_hash_calculate(nullptr, 0), 0u);
    EXPECT_EQ(oru_hash_str_calc(""), 0u);
}

// 0x80 counts as 0xffffff80: fffdff80 after the first shift, fc02087e after the second; then
// dc124c6e, dc09ce27, c31d4e27. Unsigned it would be 0x20080 and so on.
TEST(Hash, TakesBytesWithTheirSign) {
    EXPECT_EQ(oru_hash_calculate("\x80", 1), 0xc31d4e27u);
    EXPECT_EQ(oru_hash_str_calc("\x80"), 0xc31d4e27u);
}

TEST(Hash, OfNumbersIsThatOfTheirBytes) {
    const int32_t four = 0x64636261;  // "abcd"
    const int64_t eight = 0x6867666564636261;
    const uint32_t of_four = oru_hash_str_calc("abcd");
    const uint32_t of_eight = oru_hash_str_calc("abcdefgh");
    EXPECT_EQ(oru_hash_int_calc(&four), of_four);
    EXPECT_EQ(oru_hash_unsigned_int_calc(&four), of_four);
    EXPECT_EQ(oru_hashset_int_calc(&four), of_four);
    EXPECT_EQ(oru_hash_long_calc(&eight), of_eight);
    EXPECT_EQ(oru_hashset_long_calc(&eight), of_eight);
    const char *text = "abcd";
    EXPECT_EQ(oru_hashset_str_calc(&text), of_four);
}

TEST(Hash, KeysMustBeThere) {
    EXPECT_ASSERTION(oru_hash_calculate(nullptr, 1), "bytes");
    EXPECT_ASSERTION(oru_hash_str_calc(nullptr), "text");
    EXPECT_ASSERTION(oru_hashset_str_calc(nullptr), "holder");
    for (auto *hash : {oru_hash_int_calc, oru_hash_unsigned_int_calc, oru_hashset_int_calc,
                       oru_hash_long_calc, oru_hashset_long_calc}) {
        EXPECT_ASSERTION(hash(nullptr), "key");
    }
}

TEST(Match, BothKeysMustBeThere) {
    const int64_t key = 7;
    for (auto *match : {oru_hash_int_matcher, oru_hash_unsigned_int_matcher,
                        oru_hashset_int_matcher, oru_hash_long_matcher, oru_hashset_long_matcher}) {
        EXPECT_ASSERTION(match(nullptr, &key), "a");
        EXPECT_ASSERTION(match(&key, nullptr), "b");
    }
    EXPECT_ASSERTION(oru_hash_str_matcher(nullptr, "a"), "a");
    EXPECT_ASSERTION(oru_hash_str_matcher("a", nullptr), "b");
    const char *text = "a";
    EXPECT_ASSERTION(oru_hashset_str_matcher(nullptr, &text), "holder1");
    EXPECT_ASSERTION(oru_hashset_str_matcher(&text, nullptr), "holder2");
}

TEST(Match, NumbersAnswerNonZeroForEqual) {
    const int32_t a = 7;
    const int32_t same = 7;
    const int32_t other = 0x01000007;
    EXPECT_NE(oru_hash_int_matcher(&a, &same), 0);
    EXPECT_NE(oru_hash_unsigned_int_matcher(&a, &same), 0);
    EXPECT_NE(oru_hashset_int_matcher(&a, &same), 0);
    EXPECT_EQ(oru_hash_int_matcher(&a, &other), 0);
    EXPECT_EQ(oru_hash_unsigned_int_matcher(&a, &other), 0);
    EXPECT_EQ(oru_hashset_int_matcher(&a, &other), 0);
}

TEST(Match, TheTwoForLongsAnswerOppositely) {
    const int64_t a = 7;
    const int64_t same = 7;
    const int64_t other = 0x0100000000000007;
    EXPECT_NE(oru_hashset_long_matcher(&a, &same), 0);
    EXPECT_EQ(oru_hashset_long_matcher(&a, &other), 0);
    EXPECT_EQ(oru_hash_long_matcher(&a, &same), 0);
    EXPECT_NE(oru_hash_long_matcher(&a, &other), 0);
}

TEST(Match, PlainTextsCompare) {
    EXPECT_EQ(oru_hash_str_matcher("abc", "abc"), 0);
    EXPECT_LT(oru_hash_str_matcher("abc", "abd"), 0);
    EXPECT_GT(oru_hash_str_matcher("abc", "ab"), 0);
}

TEST(Match, HeldTextsAnswerNonZeroForEqual) {
    const std::string long_text(100000, 'x');
    const std::string same_text = long_text;
    const std::string other_text = long_text + "y";
    const char *a = "abc";
    const std::string copy = "abc";
    const char *same = copy.c_str();
    const char *longer = "abcd";
    const char *shorter = "ab";
    const char *empty = "";
    const char *long1 = long_text.c_str();
    const char *long2 = same_text.c_str();
    const char *long3 = other_text.c_str();
    EXPECT_NE(oru_hashset_str_matcher(&a, &same), 0);
    EXPECT_EQ(oru_hashset_str_matcher(&a, &longer), 0);
    EXPECT_EQ(oru_hashset_str_matcher(&longer, &a), 0);
    EXPECT_EQ(oru_hashset_str_matcher(&a, &shorter), 0);
    EXPECT_EQ(oru_hashset_str_matcher(&empty, &a), 0);
    EXPECT_EQ(oru_hashset_str_matcher(&a, &empty), 0);
    EXPECT_NE(oru_hashset_str_matcher(&empty, &empty), 0);
    EXPECT_NE(oru_hashset_str_matcher(&long1, &long2), 0);
    EXPECT_EQ(oru_hashset_str_matcher(&long1, &long3), 0);
}

}  // namespace
