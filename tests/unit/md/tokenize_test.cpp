// Tokens of conditions and constraints, by every character that means something.
#include <gtest/gtest.h>
#include <oru/condition.h>
#include <oruplatform/poolheap.h>

#include <string>
#include <vector>

#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

struct Token {
    int32_t type;
    std::string text;
    friend bool operator==(const Token &, const Token &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Token &token) {
        return out << token.type << ':' << token.text;
    }
};
using Tokens = std::vector<Token>;

Tokens tokenize(const std::string &text, int32_t expected_code = 0, int32_t max = 20) {
    char *texts[200];
    int32_t types[200];
    int32_t code = 0;
    const int32_t count = oru_do_condition_tokenize(text.c_str(), max, texts, types, &code);
    EXPECT_EQ(code, expected_code) << text;
    Tokens tokens;
    for (int32_t i = 0; i < count; ++i) {
        tokens.push_back({types[i], texts[i]});
        ph_free_named(texts[i]);
    }
    return tokens;
}

TEST(Tokenize, KeywordsAreKnownByWhatStandsBehindTheirLastDot) {
    EXPECT_EQ(tokenize("and or not values size strlen regex is_null not_null ordered_by unique "
                       "default AND a.b.values a.size.x "),
              (Tokens{{7, "and"},
                      {8, "or"},
                      {9, "not"},
                      {10, "values"},
                      {11, "size"},
                      {12, "strlen"},
                      {13, "regex"},
                      {14, "is_null"},
                      {15, "not_null"},
                      {16, "ordered_by"},
                      {17, "unique"},
                      {18, "default"},
                      {1, "AND"},
                      {10, "a.b.values"},
                      {1, "a.size.x"}}));
}

TEST(Tokenize, BlankAndTabEndAWord) {
    EXPECT_EQ(tokenize("a b\tc  "), (Tokens{{1, "a"}, {1, "b"}, {1, "c"}}));
}

TEST(Tokenize, LineEndsAreDroppedFromWords) {
    EXPECT_EQ(tokenize("a\nb\rc "), (Tokens{{1, "abc"}}));
}

TEST(Tokenize, LastWordNeedsAnEnd) {
    EXPECT_EQ(tokenize("x.is_null"), Tokens{});
    EXPECT_EQ(tokenize("x.is_null()"), (Tokens{{14, "x.is_null"}}));
    EXPECT_EQ(tokenize(""), Tokens{});
}

TEST(Tokenize, ParenthesesVanishBehindAWord) {
    EXPECT_EQ(tokenize("values(1)"), (Tokens{{10, "values"}, {1, "1"}}));
    EXPECT_EQ(tokenize("(a )"), (Tokens{{2, "("}, {1, "a"}, {3, ")"}}));
    EXPECT_EQ(tokenize("a(())"), (Tokens{{1, "a"}, {2, "("}, {3, ")"}, {3, ")"}}));
    EXPECT_EQ(tokenize("()"), (Tokens{{2, "("}, {3, ")"}}));
}

TEST(Tokenize, BarVanishesBehindAWord) {
    EXPECT_EQ(tokenize("1|2)"), (Tokens{{1, "1"}, {1, "2"}}));
    EXPECT_EQ(tokenize("1 |2)"), (Tokens{{1, "1"}, {4, "|"}, {1, "2"}}));
}

TEST(Tokenize, TwoDotsAndCommasAreTokens) {
    EXPECT_EQ(tokenize("1..5,7)"), (Tokens{{1, "1"}, {5, ".."}, {1, "5"}, {6, ","}, {1, "7"}}));
    EXPECT_EQ(tokenize("..1.5)"), (Tokens{{5, ".."}, {1, "1.5"}}));
}

TEST(Tokenize, QuotesAreOrdinary) {
    EXPECT_EQ(tokenize("\"a b\")"), (Tokens{{1, "\"a"}, {1, "b\""}}));
}

TEST(Tokenize, LiteralReplacesTheWordBeforeIt) {
    EXPECT_EQ(tokenize("lost{\"a\":\"} , (\"} x)"), (Tokens{{1, "{\"a\":\"} , (\"}"}, {1, "x"}}));
    EXPECT_EQ(tokenize("{\"\\\"}\"}"), (Tokens{{1, "{\"\\\"}\"}"}}));
    EXPECT_EQ(tokenize("{a{b}c})"), (Tokens{{1, "{a{b}"}, {1, "c}"}}));  // not nested
    EXPECT_EQ(tokenize("{open"), (Tokens{{1, "{open"}}));
}

TEST(Tokenize, LiteralEndsAfter127Characters) {
    const auto tokens = tokenize("{" + std::string(130, 'x') + "}y)");
    ASSERT_EQ(tokens.size(), 2u);
    EXPECT_EQ(tokens[0].text, "{" + std::string(126, 'x'));
    EXPECT_EQ(tokens[1].text, "xxxx}y");
}

TEST(Tokenize, WordHas127CharactersAtMost) {
    const std::string word(127, 'w');
    EXPECT_EQ(tokenize(word + " "), (Tokens{{1, word}}));
    EXPECT_EQ(tokenize("a w" + word + " b ", 107), (Tokens{{1, "a"}}));
}

TEST(Tokenize, SurplusTokensEndTheWork) {
    EXPECT_EQ(tokenize("a b c ", 107, 2), (Tokens{{1, "a"}, {1, "b"}}));
    EXPECT_EQ(tokenize("a b ", 0, 2), (Tokens{{1, "a"}, {1, "b"}}));
    EXPECT_EQ(tokenize("a ", 107, 0), Tokens{});
}

TEST(Tokenize, CodeThatIsSetAlreadyEndsTheWork) {
    char *texts[1];
    int32_t types[1];
    int32_t code = 5;
    EXPECT_EQ(oru_do_condition_tokenize("a ", 1, texts, types, &code), 0);
    EXPECT_EQ(code, 5);
}

TEST(Tokenize, NullIsRefusedByName) {
    char *texts[1];
    int32_t types[1];
    int32_t code = 0;
    EXPECT_ASSERTION(oru_do_condition_tokenize(nullptr, 1, texts, types, &code), "str");
    EXPECT_ASSERTION(oru_do_condition_tokenize("a ", 1, nullptr, types, &code), "tokens");
    EXPECT_ASSERTION(oru_do_condition_tokenize("a ", 1, texts, nullptr, &code), "types");
    EXPECT_ASSERTION(oru_do_condition_tokenize("a ", 1, texts, types, nullptr), "errp");
}

TEST(Tokenize, WithoutMemoryTheCodeSaysSo) {
    oru::test::sweep_oom([] {
        char *texts[9];
        int32_t types[9];
        int32_t code = 0;
        const int32_t count = oru_do_condition_tokenize("values(1..5)", 9, texts, types, &code);
        EXPECT_EQ(code, oru::test::oom_hit() ? 10002 : 0);
        EXPECT_TRUE(count == 4 || oru::test::oom_hit());
        for (int32_t i = 0; i < count; ++i)
            ph_free_named(texts[i]);
    });
}

}  // namespace
