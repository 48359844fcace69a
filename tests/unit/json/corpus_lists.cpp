// Lists, tables and property tables.
#include "oru/nlist.h"
#include "oru/properties_list.h"
#include "oru/vtable.h"
#include "tests/unit/json/build.h"
#include "tests/unit/json/corpus.h"

#define OBJECT(kind, name, expression)                     \
    {                                                      \
        &kind, name, []() -> void * { return expression; } \
    }

namespace oru::test {
namespace {

using namespace build;

ORUDoNlist *names(std::initializer_list<const char *> texts) {
    ORUDoNlist *list = oru_do_nlist_new();
    for (const char *words : texts)
        oru_do_nlist_add(list, name(words).get());
    return list;
}

ORUDoPropertiesList *tables(std::initializer_list<ORUDoProperties *> made) {
    ORUDoPropertiesList *list = oru_do_properties_list_new();
    for (ORUDoProperties *props : made)
        oru_do_properties_list_add(list, Properties(props).get());
    return list;
}

ORUDoVtable *rows(std::initializer_list<ORUDoVlist *> made) {
    ORUDoVtable *table = oru_do_vtable_new();
    for (ORUDoVlist *row : made)
        oru_do_vtable_add(table, Owned<ORUDoVlist, oru_do_vlist_deref>(row).get());
    return table;
}

ORUDoValue *secret() {
    return derived(text("s"), "PasswordString");
}

// An entry that lost its value.
ORUDoProperties *table_without_value() {
    ORUDoProperties *props = table({{"a", number(1)}});
    oru_do_properties_reset_values(props);
    return props;
}

const Specimen kTables[] = {
    OBJECT(kProperties, "one", table({{"a", number(1)}})),
    OBJECT(kProperties, "kinds",
           table({{"n", number(-1)},
                  {"s", text("x\"<")},
                  {"u", mr_uri("/a")},
                  {"e", label("up")},
                  {"x", oru_do_value_new_hex_binary("\xab", 1)},
                  {"r", oru_do_value_new_double(0.5)},
                  {"q", sequence({{"a", number(1)}})},
                  {"z", nothing()}})),
    OBJECT(kProperties, "empty", table({})),
    OBJECT(kProperties, "array", table({{"a", array({number(1), number(2)})}, {"b", number(3)}})),
    OBJECT(kProperties, "mixed_array",
           table({{"a", array({number(1), text("x")})}, {"b", bits({label("c")})}})),
    OBJECT(
        kProperties, "long",
        table({{"a", oru_do_value_new_long(4294967301)}, {"b", oru_do_value_new_double(1e100)}})),
    OBJECT(kProperties, "secret", table({{"a", secret()}})),
    OBJECT(kProperties, "without_value", table_without_value()),
    OBJECT(kProperties, "default", table({{"a", oru_do_value_new_default()}, {"b", number(1)}})),
    OBJECT(kProperties, "quoted_name", table({{"a\"b", number(1)}})),
    OBJECT(kProperties, "names_of_tags", table({{"%int", number(1)}, {"_x()", number(2)}})),
    OBJECT(kPropertiesList, "two", tables({table({{"a", number(1)}}), table({{"b", text("x")}})})),
    OBJECT(kPropertiesList, "empty", tables({})),
    OBJECT(kPropertiesList, "empty_table", tables({table({}), table({{"a", number(1)}})})),
    OBJECT(kPropertiesList, "secret", tables({table({{"a", secret()}})})),
};

const Specimen kLists[] = {
    OBJECT(kNlist, "two", names({"a", "pkg:1.0/b"})),
    OBJECT(kNlist, "empty", names({})),
    OBJECT(kNlist, "quoted_name", names({"a\"b"})),
    OBJECT(kNvlist, "two", named({{"a", number(1)}, {"b", text("x\n")}})),
    OBJECT(kNvlist, "equal_names", named({{"a", number(1)}, {"a", oru_do_value_new_long(2)}})),
    OBJECT(kNvlist, "empty", named({})),
    OBJECT(kNvlist, "nested",
           named({{"a", array({number(1)})}, {"b", choice({{"c", nothing()}})}})),
    OBJECT(kNvlist, "secret", named({{"a", secret()}})),
    OBJECT(kVlist, "ints", list({number(1), number(2)})),
    OBJECT(kVlist, "strings", list({text("a"), text("b"), text("c")})),
    OBJECT(kVlist, "mixed", list({number(1), text("x"), nothing()})),
    OBJECT(kVlist, "nested", list({array({number(1), number(2)}), number(3)})),
    OBJECT(kVlist, "empty", list({})),
    OBJECT(kVlist, "secrets", list({secret(), secret()})),
    OBJECT(kVlist, "mixed_secret", list({secret(), number(1)})),
    OBJECT(kVtable, "ints", rows({list({number(1)}), list({number(2)}), list({number(3)})})),
    OBJECT(kVtable, "mixed", rows({list({number(1), text("a")}), list({number(2), nothing()})})),
    OBJECT(kVtable, "strings",
           rows({list({text("a"), text("b")}), list({text("c"), text("d\"")})})),
    OBJECT(kVtable, "one_row", rows({list({text("a"), text("b")})})),
    OBJECT(kVtable, "secrets", rows({list({secret(), number(1)}), list({secret(), number(2)})})),
    OBJECT(kVtable, "empty_row", rows({list({}), list({number(1)})})),
    OBJECT(kVtable, "empty", rows({})),
};

}  // namespace

void add_lists(std::vector<Specimen> &corpus) {
    corpus.insert(corpus.end(), std::begin(kTables), std::end(kTables));
    corpus.insert(corpus.end(), std::begin(kLists), std::end(kLists));
}

}  // namespace oru::test
