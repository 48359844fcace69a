// Descriptions: types, constraints, properties and resources.
#include "oru/constraint.h"
#include "oru/mr_meta.h"
#include "oru/ntlist.h"
#include "oru/prop_meta.h"
#include "oru/typedef_meta.h"
#include "tests/unit/json/build.h"
#include "tests/unit/json/corpus.h"

#define OBJECT(kind, name, expression)                     \
    {                                                      \
        &kind, name, []() -> void * { return expression; } \
    }

namespace oru::test {
namespace {

using namespace build;
using Condition = Owned<ORUDoCondition, oru_do_condition_deref>;
using Constraint = Owned<ORUDoConstraint, oru_do_constraint_deref>;
using ConstraintList = Owned<ORUDoConstraintList, oru_do_constraint_list_deref>;
using Ntlist = Owned<ORUDoNtlist, oru_do_ntlist_deref>;
using Nvlist = Owned<ORUDoNvlist, oru_do_nvlist_deref>;
using PropMeta = Owned<ORUDoPropMeta, oru_do_prop_meta_deref>;
using PropMetaList = Owned<ORUDoPropMetaList, oru_do_prop_meta_list_deref>;
using TypedefMeta = Owned<ORUDoTypedefMeta, oru_do_typedef_meta_deref>;

// ---- Constraints ----

ORUDoConstraint *constraint(const char *words, const char *condition = nullptr) {
    const Condition made(condition != nullptr ? oru_do_condition_new(condition) : nullptr);
    return oru_do_constraint_new(made.get(), words);
}

ORUDoConstraintList *constraints(std::initializer_list<ORUDoConstraint *> made) {
    ORUDoConstraintList *list = oru_do_constraint_list_new();
    for (ORUDoConstraint *one : made)
        oru_do_constraint_list_add(list, Constraint(one).get());
    return list;
}

// ---- Types ----

ORUDoTypedefMeta *simple(const char *words, int32_t code, ORUDoConstraintList *limits) {
    return oru_do_typedef_meta_new_simpletype(name(words).get(), code,
                                              ConstraintList(limits).get());
}

ORUDoNtlist *members() {
    ORUDoNtlist *list = oru_do_ntlist_new();
    const TypedefMeta number_type(oru_do_typedef_meta_new_builtin(ORU_DO_TYPE_INT, nullptr));
    const TypedefMeta label_type(oru_do_typedef_meta_new_enum(
        name("State").get(), Nvlist(named({{"up", number(1)}})).get()));
    oru_do_ntlist_add_typedef_meta(list, name("n").get(), number_type.get());
    oru_do_ntlist_add_typedef_meta(list, name("s").get(), label_type.get());
    return list;
}

const Specimen kTypes[] = {
    OBJECT(kConstraint, "plain", constraint("values(1..5)")),
    OBJECT(kConstraint, "condition", constraint("regex(\"a.c\")", "a = \"b\"")),
    OBJECT(kConstraintList, "two",
           constraints({constraint("strlen(1..9)"), constraint("default(5)", "x.is_null()")})),
    OBJECT(kConstraintList, "empty", constraints({})),
    OBJECT(kTypedefMeta, "builtin", oru_do_typedef_meta_new_builtin(ORU_DO_TYPE_MR_URI, nullptr)),
    OBJECT(kTypedefMeta, "simple", simple("p:1/Name", ORU_DO_TYPE_STRING, nullptr)),
    OBJECT(kTypedefMeta, "no_constraints", simple("N", ORU_DO_TYPE_LONG, constraints({}))),
    OBJECT(kTypedefMeta, "constraint",
           simple("N", ORU_DO_TYPE_INT, constraints({constraint("values(1)")}))),
    OBJECT(kTypedefMeta, "enum",
           oru_do_typedef_meta_new_enum(
               name("State").get(), Nvlist(named({{"up", number(1)}, {"down", number(2)}})).get())),
    OBJECT(kTypedefMeta, "sequence",
           oru_do_typedef_meta_new_sequence(name("S").get(), Ntlist(members()).get())),
    OBJECT(kTypedefMeta, "choice",
           oru_do_typedef_meta_new_choice(name("C").get(), Ntlist(members()).get())),
    OBJECT(kTypedefMeta, "without_part", oru_do_typedef_meta_new_enum(name("E").get(), nullptr)),
    OBJECT(kNtlist, "two", members()),
    OBJECT(kNtlist, "empty", oru_do_ntlist_new()),
};

// ---- Properties and resources ----

ORUDoPropMeta *key() {
    return oru_do_prop_meta_new(name("id").get(), 0, 1, 0, nullptr, ORU_DO_TYPE_INT,
                                name("int").get(), 1, 0, 255, 0);
}

ORUDoPropMeta *reference() {
    return oru_do_prop_meta_new(name("net").get(), 1, 0, -1, nullptr, ORU_DO_TYPE_MR_URI,
                                name("p:1/Net").get(), 2, 3, 4, 0);
}

ORUDoPropMetaList *properties(std::initializer_list<ORUDoPropMeta *> made) {
    ORUDoPropMetaList *list = oru_do_prop_meta_list_new();
    for (ORUDoPropMeta *one : made)
        oru_do_prop_meta_list_add(list, PropMeta(one).get());
    return list;
}

ORUDoMrMeta *resource(const char *words, ORUDoPropMetaList *made) {
    return oru_do_mr_meta_new(name("com.pkg").get(), "1.0", name(words).get(), 255,
                              PropMetaList(made).get(), nullptr);
}

ORUDoMrMetaList *resources(std::initializer_list<ORUDoMrMeta *> made) {
    ORUDoMrMetaList *list = oru_do_mr_meta_list_new();
    for (ORUDoMrMeta *one : made) {
        oru_do_mr_meta_list_add(list, one);
        oru_do_mr_meta_deref(one);
    }
    return list;
}

const Specimen kResources[] = {
    OBJECT(kPropMeta, "key", key()),
    OBJECT(kPropMeta, "reference", reference()),
    OBJECT(kPropMetaList, "two", properties({key(), reference()})),
    OBJECT(kPropMetaList, "empty", properties({})),
    OBJECT(kMrMeta, "plain", resource("Net", properties({key(), reference()}))),
    OBJECT(kMrMeta, "without_properties", resource("Net", nullptr)),
    OBJECT(kMrMetaList, "two", resources({resource("A", nullptr), resource("B", nullptr)})),
    OBJECT(kMrMetaList, "empty", resources({})),
};

}  // namespace

void add_descriptions(std::vector<Specimen> &corpus) {
    corpus.insert(corpus.end(), std::begin(kTypes), std::end(kTypes));
    corpus.insert(corpus.end(), std::begin(kResources), std::end(kResources));
}

}  // namespace oru::test
