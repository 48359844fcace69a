// Which documents the fuzzer leaves out.
#include "tests/fuzz/dtl_fuzz.h"

namespace {

// Names of more than 63 characters and more than 10 segments end the process when an address is
// read. An address is put together of what the document says at each level, so there are few
// slashes in each text, and no rows below an address that has many.
constexpr int kMostTextSlashes = 3;
constexpr int kMostSuffixSlashes = 2;
constexpr int kMostLength = 48;

struct Limits {
    int slashes = 0;
    int length = 0;
    int suffix_slashes = 0;
    bool in_suffix = false;

    bool slash() {
        length = 0;
        suffix_slashes += in_suffix ? 1 : 0;
        return ++slashes <= kMostTextSlashes && suffix_slashes <= kMostSuffixSlashes;
    }
    bool character(char c) {
        in_suffix = in_suffix || c == ')';
        return ++length <= kMostLength;
    }
    void begin() {
        slashes = length = 0;
        in_suffix = false;
    }
};

bool is_within_limits(const std::string &text) {
    Limits limits;
    char last = 0, quote = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool of_tag = last == '<' || (text[i + 1] == '>' && quote == 0);
        const bool opens = quote == 0 && last == '=' && (c == '"' || c == '\'');
        if (c == '<' || opens) {
            limits.begin();
            quote = opens ? c : '\0';
        } else if (c == quote) {
            quote = 0;
        } else if (!(c == '/' && !of_tag ? limits.slash() : limits.character(c))) {
            return false;
        }
        last = c;
    }
    // What writes a slash, or the name of a function, in other letters.
    return text.find("&#") == std::string::npos && text.find("\\u") == std::string::npos;
}

// A quotient may have a zero below it, for which the machine ends the process.
bool may_divide(const std::string &text) {
    return text.find("_div()") != std::string::npos || text.find("_mod()") != std::string::npos;
}

}  // namespace

bool fuzz::is_harmless(const std::string &document) {
    return is_within_limits(document) && !may_divide(document);
}
