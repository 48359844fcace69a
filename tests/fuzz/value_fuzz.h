// What is asked of values, whichever way they were made.
#ifndef ORU_TESTS_FUZZ_VALUE_FUZZ_H
#define ORU_TESTS_FUZZ_VALUE_FUZZ_H

#include "tests/fuzz/fuzz.h"

namespace fuzz {

struct Sample {
    int32_t type;
    std::string text;
};

// A value of the type from a text, null where there is none.
Value parsed(int32_t type, const std::string &text);

// A value straight from the bytes, where its type can be made so.
Value made(const Sample &sample, const std::string &bytes);

// A resource with an attribute of each type.
MrMeta described_types();

// Every other way to a value from the text has to agree.
void try_making(const Sample &sample, ORUDoMrMeta *meta);

// What stands behind the slashes of an address is its last byte.
void check_prefix(const Sample &sample, const Value &value);

std::string text_of(ORUDoValue *value);

// The bytes of a sized value of the types 15, 101 and 102.
std::string bytes_of(ORUDoValue *value);

inline bool is_sized(int32_t type) {
    return type == 8 || type == 103 || type == 15 || type == 101 || type == 102;
}

inline bool is_integer(int32_t type) {
    return type >= 0 && type <= 7;
}

inline bool holds_objects(int32_t type) {
    return type == 14 || type >= 104;
}

// Forms: text, XML, key text, and the ways back.
void check_forms(ORUDoValue *value);

// Getters, widening, clones and what a value is to itself.
void check_reading(ORUDoValue *value);

// Equality and order of any two and any three.
void check_pair(ORUDoValue *a, ORUDoValue *b);
void check_triple(ORUDoValue *a, ORUDoValue *b, ORUDoValue *c);

}  // namespace fuzz

#endif
