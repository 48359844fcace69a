// Answers as the lines that scripts expect.
#ifndef ORU_TESTS_BEHAVIOUR_TEXT_H
#define ORU_TESTS_BEHAVIOUR_TEXT_H

#include <string>
#include <vector>

#include "handles.h"

namespace behaviour {

using Lines = std::vector<std::string>;

// An address of a script as the back end gets it: what begins with one slash is below the root of
// the default location, what has a tilde in front is handed over without it.
std::string full_address(const std::string &address);

// A text without the default location.
std::string without_location(std::string text);

// A value as scripts write it; "-" for none, a default in parentheses, with its type when that is
// asked for.
std::string text_of(ORUDoValue *value, bool with_types = false);

// "CODE WORDS".
std::string text_of_code(int32_t code);

// The error of a commit, a line each: code and words; then code, address and words of each fault.
Lines text_of_error(ORUDoError *error);

}  // namespace behaviour

#endif
