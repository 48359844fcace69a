// The kinds of objects that have a wire form, each with its writers, its reader and its release.
#ifndef ORU_TESTS_UNIT_JSON_KINDS_H
#define ORU_TESTS_UNIT_JSON_KINDS_H

#include <string>
#include <string_view>

#include "oru/types.h"

namespace oru::test {

struct Kind {
    const char *name;
    int32_t (*json)(void *object, ORUDoStrbuf *buf, uint32_t options);
    int32_t (*xml)(void *object, ORUDoStrbuf *buf, uint32_t options);    // null without an XML form
    void *(*read)(const char *text, int32_t length, ORUDoError **errp);  // null without a reader
    void (*release)(void *object);
};

extern const Kind kValue, kProperties, kPropertiesList, kNlist, kNvlist, kVlist, kVtable, kNtlist,
    kTypedefMeta, kConstraint, kConstraintList, kPropMeta, kPropMetaList, kMrMeta, kMrMetaList,
    kConfigOps, kError, kPropErrs, kEvent, kDtree, kErrorList, kRows;

// The kind of that name; null when there is none.
const Kind *kind_named(std::string_view name);

// What a reader makes of a text, in the JSON form of the options. Without an object it is "no
// object", and the code when there is an error.
std::string written_again(const Kind &kind, const std::string &text, uint32_t options);

}  // namespace oru::test

#endif
