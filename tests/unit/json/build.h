// Short builders of objects. What they are given they take over; the results are the caller's.
#ifndef ORU_TESTS_UNIT_JSON_BUILD_H
#define ORU_TESTS_UNIT_JSON_BUILD_H

#include <initializer_list>
#include <utility>

#include "oru/dtree.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "tests/unit/json/support.h"

namespace oru::test::build {

using Name = Owned<ORUDoName, oru_do_name_deref>;
using Properties = Owned<ORUDoProperties, oru_do_properties_deref>;
using Uri = Owned<ORUDoUri, oru_do_uri_deref>;

struct Member {
    const char *name;
    ORUDoValue *value;
};

inline Name name(const char *text) {
    return Name(oru_do_name_new(text));
}

inline Uri uri(const char *text) {
    return Uri(oru_do_uri_new(text));
}

inline ORUDoNvlist *named(std::initializer_list<Member> members) {
    ORUDoNvlist *list = oru_do_nvlist_new();
    for (const Member &member : members)
        oru_do_nvlist_add(list, member.name, Value(member.value).get());
    return list;
}

inline ORUDoVlist *list(std::initializer_list<ORUDoValue *> values) {
    ORUDoVlist *made = oru_do_vlist_new();
    for (ORUDoValue *value : values)
        oru_do_vlist_add(made, Value(value).get());
    return made;
}

inline ORUDoProperties *table(std::initializer_list<Member> members) {
    ORUDoProperties *props = oru_do_properties_new();
    for (const Member &member : members)
        oru_do_properties_set_value(props, member.name, Value(member.value).get());
    return props;
}

// ---- Values ----

inline ORUDoValue *number(int32_t n) {
    return oru_do_value_new_int(n);
}

inline ORUDoValue *text(const char *words) {
    return oru_do_value_new_string(words);
}

inline ORUDoValue *label(const char *words) {
    return oru_do_value_new_enumeration(words);
}

inline ORUDoValue *nothing() {
    return oru_do_value_new_null();
}

inline ORUDoValue *derived(ORUDoValue *value, const char *type_name) {
    oru_do_value_set_typedef_name(value, type_name);
    return value;
}

inline ORUDoValue *mr_uri(const char *words) {
    return oru_do_value_new_mr_uri(uri(words).get());
}

inline ORUDoValue *array(std::initializer_list<ORUDoValue *> values) {
    const Owned<ORUDoVlist, oru_do_vlist_deref> made(list(values));
    return oru_do_value_new_array(made.get());
}

inline ORUDoValue *bits(std::initializer_list<ORUDoValue *> values) {
    const Owned<ORUDoVlist, oru_do_vlist_deref> made(list(values));
    return oru_do_value_new_bits(made.get());
}

inline ORUDoValue *sequence(std::initializer_list<Member> members) {
    const Owned<ORUDoNvlist, oru_do_nvlist_deref> made(named(members));
    return oru_do_value_new_sequence(made.get());
}

inline ORUDoValue *choice(std::initializer_list<Member> members) {
    const Owned<ORUDoNvlist, oru_do_nvlist_deref> made(named(members));
    return oru_do_value_new_choice(made.get());
}

// ---- Trees ----

// A node below another, which owns it.
inline ORUDoDtree *child(ORUDoDtree *parent, const char *words) {
    return oru_do_dtree_add_child(parent, name(words).get());
}

inline void set_properties(ORUDoDtree *node, std::initializer_list<Member> members) {
    oru_do_dtree_set_properties(node, Properties(table(members)).get());
}

inline void set_uri(ORUDoDtree *node, const char *words) {
    oru_do_dtree_set_mr_uri(node, uri(words).get());
}

}  // namespace oru::test::build

#endif
