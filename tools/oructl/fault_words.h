// What faults are told with.
#ifndef ORU_TOOLS_ORUCTL_FAULT_WORDS_H
#define ORU_TOOLS_ORUCTL_FAULT_WORDS_H

#include <string>
#include <string_view>
#include <vector>

namespace oructl {

// A text in quotes, cut where it is long.
std::string in_quotes(std::string_view text);

// The known word that differs least, in at most two letters; empty when there is none.
std::string similar_word(std::string_view word, const std::vector<std::string> &known);

// `; is it "WORD"?`, empty without such a word.
std::string similar_question(std::string_view word, const std::vector<std::string> &known);

}  // namespace oructl

#endif
