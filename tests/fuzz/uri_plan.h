// What a URI is to be built of, taken from a text: "/name;key=Kvalue/name", where the first letter
// of a value chooses its type.
#ifndef ORU_TESTS_FUZZ_URI_PLAN_H
#define ORU_TESTS_FUZZ_URI_PLAN_H

#include <vector>

#include "tests/fuzz/uri_fuzz.h"

namespace fuzz {

struct Key {
    std::string name;
    Value value;
};

struct Segment {
    std::string name;
    std::vector<Key> keys;
};

using Plan = std::vector<Segment>;

// A text that may stand where names stand.
std::string clean(std::string text, const std::string &otherwise);

Segment segment_of(const std::string &text);
Plan plan_of(const std::string &text);

}  // namespace fuzz

#endif
