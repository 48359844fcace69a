// Errors, events, operations and data trees.
#include "oru/config_op.h"
#include "oru/event.h"
#include "oru/rows_properties.h"
#include "tests/unit/json/build.h"
#include "tests/unit/json/corpus.h"

#define OBJECT(kind, name, expression)                     \
    {                                                      \
        &kind, name, []() -> void * { return expression; } \
    }

namespace oru::test {
namespace {

using namespace build;

// ---- Errors ----

ORUDoError *with_namespace(ORUDoError *err, const char *words) {
    oru_do_error_set_namespace(err, words);
    return err;
}

ORUDoError *caused(ORUDoError *err, ORUDoError *cause) {
    oru_do_error_set_cause(err, Error(cause).get());
    return err;
}

ORUDoError *of_property(ORUDoError *err, const char *words, ORUDoError *inner) {
    oru_do_error_set_prop_err(err, name(words).get(), Error(inner).get());
    return err;
}

struct NamedError {
    const char *name;
    ORUDoError *err;
};

ORUDoPropErrs *prop_errs(std::initializer_list<NamedError> entries) {
    ORUDoPropErrs *made = oru_do_prop_errs_new();
    for (const NamedError &entry : entries)
        oru_do_prop_errs_set_err(made, name(entry.name).get(), Error(entry.err).get());
    return made;
}

ORUDoError *error_of_everything() {
    ORUDoError *err = with_namespace(oru_do_error_new(10002, "out of \"memory\" & more"), "a<b>");
    caused(err, caused(oru_do_error_new(-1, "cause"), oru_do_error_new(3, "its cause")));
    of_property(err, "p", oru_do_error_new(114, "too long"));
    return of_property(err, "q", with_namespace(oru_do_error_new(115, ""), "n"));
}

ORUDoErrorList *two_errors() {
    ORUDoErrorList *list = oru_do_error_list_new();
    oru_do_error_list_add(list, Error(oru_do_error_new(1, "one")).get());
    oru_do_error_list_add(list, Error(with_namespace(oru_do_error_new(2, "two"), "n")).get());
    return list;
}

ORUDoError *error_with_empty_set() {
    ORUDoError *err = oru_do_error_new(1, "e");
    const Owned<ORUDoPropErrs, oru_do_prop_errs_deref> none(prop_errs({}));
    oru_do_error_set_prop_errs(err, none.get());
    return err;
}

const Specimen kErrors[] = {
    OBJECT(kError, "plain", oru_do_error_new(5, "message")),
    OBJECT(kError, "code_least", oru_do_error_new(INT32_MIN, "\xc3\xa4\n")),
    OBJECT(kError, "everything", error_of_everything()),
    OBJECT(kError, "without_message", oru_do_error_new(5, nullptr)),
    OBJECT(kError, "empty_set", error_with_empty_set()),
    OBJECT(kPropErrs, "two",
           prop_errs({{"p", oru_do_error_new(1, "one")}, {"q", oru_do_error_new(2, "two")}})),
    OBJECT(kPropErrs, "nested",
           prop_errs(
               {{"p", of_property(oru_do_error_new(1, "one"), "q", oru_do_error_new(2, "two"))}})),
    OBJECT(kPropErrs, "empty", prop_errs({})),
    OBJECT(kErrorList, "two", two_errors()),
    OBJECT(kErrorList, "empty", oru_do_error_list_new()),
};

// ---- Operations and events ----

ORUDoProperties *one_number() {
    return table({{"n", number(5)}});
}

ORUDoProperties *one_secret() {
    return table({{"n", derived(text("s"), "PasswordString")}});
}

struct Operation {
    int32_t code;
    const char *uri;
    ORUDoProperties *props;
    const char *child;
    const char *mr_name;
    const char *lib_mr_name;
    ORUDoError *err;
};

ORUDoConfigOps *operations(std::initializer_list<Operation> made) {
    ORUDoConfigOps *ops = oru_do_config_ops_new();
    const auto name_or_none = [](const char *words) {
        return words != nullptr ? name(words) : Name();
    };
    for (const Operation &op : made) {
        oru_do_config_ops_add(ops, op.code, op.uri != nullptr ? uri(op.uri).get() : nullptr,
                              Properties(op.props).get(), name_or_none(op.child).get(),
                              name_or_none(op.mr_name).get(), name_or_none(op.lib_mr_name).get());
        oru_do_config_op_set_err(oru_do_config_ops_get_last_op(ops), op.err);
    }
    return ops;
}

ORUDoEvent *event(const char *address, int64_t time, int32_t severity, ORUDoProperties *info) {
    return oru_do_event_new_2(name("pkg").get(), "1.0", name("linkDown").get(),
                              address != nullptr ? uri(address).get() : nullptr, time, severity,
                              Properties(info).get());
}

const Specimen kChanges[] = {
    OBJECT(kConfigOps, "plain",
           operations({{1, "/a;k=1", one_number()}, {2, "/b", table({{"s", text("x")}})}})),
    OBJECT(kConfigOps, "names", operations({{1, "/a", one_number(), "c", "p:1/M", "l:1/M"}})),
    OBJECT(kConfigOps, "error",
           operations(
               {{1, "/a", one_number(), nullptr, nullptr, nullptr, oru_do_error_new(7, "w\"")}})),
    OBJECT(kConfigOps, "code_zero", operations({{0, "/a", one_number()}, {3, "/b", one_number()}})),
    OBJECT(kConfigOps, "without_properties", operations({{2, "/a"}})),
    OBJECT(kConfigOps, "without_uri", operations({{2, nullptr, one_number()}})),
    OBJECT(kConfigOps, "secret", operations({{1, "/a", one_secret()}})),
    OBJECT(kConfigOps, "empty", operations({})),
    OBJECT(kEvent, "plain", event("/a;k='x'", 1234567890123, 4, one_number())),
    OBJECT(kEvent, "least", event("/a", INT64_MIN, INT32_MIN, one_number())),
    OBJECT(kEvent, "secret", event("/a", 0, 0, one_secret())),
    OBJECT(kEvent, "without_info", event("/a", 1, 2, nullptr)),
    OBJECT(kEvent, "without_uri", event(nullptr, 1, 2, one_number())),
};

// ---- Trees ----

// Every part of a node, and children of children.
ORUDoDtree *full_tree() {
    ORUDoDtree *root = oru_do_dtree_new_str("root");
    set_uri(root, "/r;k=1&2");
    set_properties(root, {{"p", number(1)}, {"s", text("x<")}});
    ORUDoDtree *first = child(root, "a");
    oru_do_dtree_set_error(first, Error(oru_do_error_new(1, "e")).get());
    ORUDoDtree *inner = child(first, "b");
    set_properties(inner, {{"q", label("up")}});
    child(root, "c");
    return root;
}

ORUDoDtree *tree_with_hidden(bool all) {
    ORUDoDtree *root = oru_do_dtree_new_str("r");
    set_properties(root, {{"p", number(1)}});
    for (const char *words : {"a", "b", "c"}) {
        ORUDoDtree *node = child(root, words);
        oru_do_dtree_hide_node(node, all || *words == 'b' ? 1 : 0);
    }
    child(oru_do_dtree_get_child(root, 1), "below");  // goes with the node above it
    return root;
}

ORUDoDtree *tree_without_name() {
    ORUDoDtree *root = oru_do_dtree_new_str("");
    set_properties(child(root, "a"), {{"p", number(1)}});
    return root;
}

ORUDoDtree *tree_with_empty_table() {
    ORUDoDtree *root = oru_do_dtree_new_str("r");
    set_properties(root, {});
    return root;
}

ORUDoDtree *tree_with_secret() {
    ORUDoDtree *root = oru_do_dtree_new_str("r");
    oru_do_dtree_set_properties(root, Properties(one_secret()).get());
    return root;
}

ORUDoRowProperties *two_rows() {
    const Owned<ORUDoDtree, oru_do_dtree_deref> root(oru_do_dtree_new_str("r"));
    ORUDoDtree *first = child(root.get(), "a");
    set_uri(first, "/a;k=1");
    set_properties(first, {{"p", number(1)}});
    ORUDoDtree *second = child(child(root.get(), "b"), "c");
    set_uri(second, "/b/c");
    set_properties(second, {{"q", text("x")}});
    oru_do_dtree_hide_node(second, 1);  // which does not matter here
    return oru_do_dtree_into_properties(root.get());
}

const Specimen kTrees[] = {
    OBJECT(kDtree, "leaf", oru_do_dtree_new_str("a\n\"b\"")),
    OBJECT(kDtree, "full", full_tree()),
    OBJECT(kDtree, "hidden_child", tree_with_hidden(false)),
    OBJECT(kDtree, "hidden_children", tree_with_hidden(true)),
    OBJECT(kDtree, "without_name", tree_without_name()),
    OBJECT(kDtree, "empty_table", tree_with_empty_table()),
    OBJECT(kDtree, "secret", tree_with_secret()),
    OBJECT(kRows, "two", two_rows()),
};

}  // namespace

void add_objects(std::vector<Specimen> &corpus) {
    corpus.insert(corpus.end(), std::begin(kErrors), std::end(kErrors));
    corpus.insert(corpus.end(), std::begin(kChanges), std::end(kChanges));
    corpus.insert(corpus.end(), std::begin(kTrees), std::end(kTrees));
}

}  // namespace oru::test
