// Whether an answer is the one that a script expects, and how they differ.
#ifndef ORU_TESTS_BEHAVIOUR_COMPARE_H
#define ORU_TESTS_BEHAVIOUR_COMPARE_H

#include "text.h"

namespace behaviour {

// Lines are the same when their words are: it does not matter how many blanks stand between them.
// In an expected line a word that ends in "..." stands for all words that begin so, and "..." alone
// at the end for whatever comes there.
bool is_same(const Lines &expected, const Lines &got);

// All lines of both: "-" in front of what is expected and did not come, "+" of what came and is not
// expected.
Lines difference(const Lines &expected, const Lines &got);

}  // namespace behaviour

#endif
