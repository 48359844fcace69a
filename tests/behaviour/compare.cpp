#include "compare.h"

#include <algorithm>
#include <sstream>

namespace behaviour {
namespace {

constexpr std::string_view kAny = "...";

Lines words_of(const std::string &line) {
    std::istringstream stream(line);
    Lines words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

bool fits_word(const std::string &expected, const std::string &got) {
    return expected == got || (expected.ends_with(kAny) &&
                               got.starts_with(expected.substr(0, expected.size() - kAny.size())));
}

bool fits(const std::string &expected, const std::string &got) {
    Lines wanted = words_of(expected);
    Lines given = words_of(got);
    if (!wanted.empty() && wanted.back() == kAny) {
        wanted.pop_back();
        given.resize(std::min(given.size(), wanted.size()));
    }
    return std::equal(wanted.begin(), wanted.end(), given.begin(), given.end(), fits_word);
}

}  // namespace

bool is_same(const Lines &expected, const Lines &got) {
    return std::equal(expected.begin(), expected.end(), got.begin(), got.end(), fits);
}

/* The longest common run of lines stays; `common[i][j]` is its length behind the first i lines of
   one and j of the other. */
Lines difference(const Lines &expected, const Lines &got) {
    std::vector<std::vector<size_t>> common(expected.size() + 1,
                                            std::vector<size_t>(got.size() + 1));
    for (size_t i = expected.size(); i-- > 0;) {
        for (size_t j = got.size(); j-- > 0;)
            common[i][j] = fits(expected[i], got[j]) ? common[i + 1][j + 1] + 1
                                                     : std::max(common[i + 1][j], common[i][j + 1]);
    }
    Lines lines;
    size_t i = 0;
    size_t j = 0;
    while (i < expected.size() || j < got.size()) {
        if (i < expected.size() && j < got.size() && fits(expected[i], got[j]))
            lines.push_back("  " + expected[i++]), j++;
        else if (j == got.size() || (i < expected.size() && common[i + 1][j] >= common[i][j + 1]))
            lines.push_back("- " + expected[i++]);
        else
            lines.push_back("+ " + got[j++]);
    }
    return lines;
}

}  // namespace behaviour
