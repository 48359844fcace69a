// What is asked of URIs, whichever way they were made.
#ifndef ORU_TESTS_FUZZ_URI_FUZZ_H
#define ORU_TESTS_FUZZ_URI_FUZZ_H

#include "tests/fuzz/fuzz.h"

namespace fuzz {

inline std::string text_of(const Uri &uri) {
    return oru_do_uri_get_uri_str(uri.get());
}

// Every accessor, on any URI that may be parsed.
void read(ORUDoUri *uri);

// A text that the parser takes as good: read, copied, derived from.
void try_good(const std::string &text);

// What the text alone can be asked and what can be derived of it, whether it is good or not.
void try_unparsed(const std::string &text);

// A plan of segments and keys taken from `text`, built in every way; each way has to parse back to
// its parts. `other` gives names and texts beside it.
void try_builders(const std::string &text, const std::string &other);

}  // namespace fuzz

#endif
