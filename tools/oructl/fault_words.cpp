#include "fault_words.h"

#include <algorithm>

namespace oructl {
namespace {

// How many letters are to be put in, left out or changed.
size_t distance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 0; i < a.size(); ++i) {
        size_t corner = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t change = corner + (a[i] == b[j] ? 0 : 1);
            corner = row[j + 1];
            row[j + 1] = std::min({change, corner + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string in_quotes(std::string_view text) {
    constexpr size_t kLongest = 60;
    size_t end = std::min(text.size(), kLongest);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return '"' + std::string(text.substr(0, end)) + (end < text.size() ? "...\"" : "\"");
}

std::string similar_word(std::string_view word, const std::vector<std::string> &known) {
    constexpr size_t kLongest = 64;
    constexpr size_t kNear = 2;
    if (word.size() > kLongest)
        return "";
    std::string nearest;
    size_t least = kNear + 1;
    for (const std::string &other : known) {
        const size_t letters = distance(word, other);
        // A short word has to keep some of its letters.
        if (letters < least && letters < word.size()) {
            least = letters;
            nearest = other;
        }
    }
    return nearest;
}

std::string similar_question(std::string_view word, const std::vector<std::string> &known) {
    const std::string similar = similar_word(word, known);
    return similar.empty() ? "" : "; is it " + in_quotes(similar) + "?";
}

}  // namespace oructl
