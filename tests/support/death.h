// Deaths that the interface promises.
#ifndef ORU_TESTS_SUPPORT_DEATH_H
#define ORU_TESTS_SUPPORT_DEATH_H

#include <gtest/gtest.h>

#include <csignal>
#include <string>

namespace oru::test {

// `text` as a regular expression that matches just that.
inline std::string literal(const std::string &text) {
    std::string pattern;
    for (char c : text) {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos)
            pattern += '\\';
        pattern += c;
    }
    return pattern;
}

}  // namespace oru::test

// The C library's report of a failed assertion with that expression text.
#define EXPECT_ASSERTION(statement, text) \
    EXPECT_DEATH(statement, ::oru::test::literal("Assertion `" text "' failed."))

// A message at level 0, then abort.
#define EXPECT_FATAL(statement, text) \
    EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGABRT), ::oru::test::literal(text))

#endif
