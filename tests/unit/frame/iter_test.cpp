// One record walks every collection: the kinds that collections bind, and who refuses what.
#include "oru/iter.h"

#include <gtest/gtest.h>

#include <cstring>

#include "oru/oru.h"
#include "tests/support/death.h"

namespace {

// A collection with the operations that concern iterators.
struct Walked {
    const char *name;
    int32_t kind;
    void *(*make)();
    void (*release)(void *);
    void (*bind)(void *, ORUDoIter *);
    int32_t (*has_next)(ORUDoIter *);
    void *(*get_next)(ORUDoIter *);
};

#define WALKED(kind, T, name)                                                     \
    Walked {                                                                      \
#name, kind, [] { return static_cast<void *>(name##_new()); },                  \
            [](void *made) { name##_deref(static_cast<T *>(made)); },                   \
            [](void *made, ORUDoIter *iter) { name##_iter(static_cast<T *>(made), iter); }, \
            name##_has_next,                                                            \
            [](ORUDoIter *iter) { return static_cast<void *>(name##_get_next(iter)); } \
    }

const Walked kWalked[] = {
    WALKED(0, ORUDoNlist, oru_do_nlist),
    WALKED(1, ORUDoVlist, oru_do_vlist),
    WALKED(2, ORUDoNvlist, oru_do_nvlist),
    WALKED(3, ORUDoProperties, oru_do_properties),
    WALKED(4, ORUDoConfigOps, oru_do_config_ops),
    WALKED(5, ORUDoMrMetaList, oru_do_mr_meta_list),
    WALKED(5, ORUDoConstraintList, oru_do_constraint_list),
    WALKED(6, ORUDoPropMetaList, oru_do_prop_meta_list),
    WALKED(7, ORUDoPropErrs, oru_do_prop_errs),
    WALKED(8, ORUDoPropertiesList, oru_do_properties_list),
    WALKED(8, ORUDoVtable, oru_do_vtable),
    WALKED(9, ORUDoNtlist, oru_do_ntlist),
    WALKED(11, ORUDoErrorList, oru_do_error_list),
    WALKED(12, ORUDoActMetaList, oru_do_act_meta_list),
};

class EveryCollection : public testing::TestWithParam<Walked> {
  protected:
    void SetUp() override { made = GetParam().make(); }
    void TearDown() override { GetParam().release(made); }

    void *made = nullptr;
    ORUDoIter iter{};
};

TEST_P(EveryCollection, BindsItsKindAndNothingElseOfTheRecord) {
    std::memset(&iter, 0x5a, sizeof iter);
    GetParam().bind(made, &iter);
    EXPECT_EQ(iter.ref, 0x5a5a5a5au);
    EXPECT_EQ(iter.coll_type, GetParam().kind);
    EXPECT_EQ(iter.collection, made);
    EXPECT_EQ(iter.next, nullptr);
    EXPECT_EQ(iter.position, 0u);
    EXPECT_EQ(GetParam().has_next(&iter), 0);
    EXPECT_EQ(GetParam().get_next(&iter), nullptr);
}

TEST_P(EveryCollection, HoldsNoReference) {
    oru_do_iter_init(&iter);
    GetParam().bind(made, &iter);
    GetParam().release(made);
    made = GetParam().make();
    GetParam().bind(made, &iter);
    EXPECT_EQ(iter.collection, made);
}

// Only `_has_next` looks at the kind.
TEST_P(EveryCollection, LooksAtTheKindWhenAskedAndNotWhenWalked) {
    oru_do_iter_init(&iter);
    EXPECT_DEATH(GetParam().has_next(&iter), "Assertion `iter->coll_type == DO_COLL_");
    EXPECT_EQ(GetParam().get_next(&iter), nullptr);
}

TEST_P(EveryCollection, NeedsAnIterator) {
    EXPECT_ASSERTION(GetParam().bind(made, nullptr), "iter");
    if (GetParam().kind == DO_COLL_NLIST) {
        EXPECT_EQ(GetParam().has_next(nullptr), 0);
        EXPECT_EQ(GetParam().get_next(nullptr), nullptr);
    } else {
        EXPECT_ASSERTION(GetParam().has_next(nullptr), "iter");
        EXPECT_ASSERTION(GetParam().get_next(nullptr), "iter");
    }
}

INSTANTIATE_TEST_SUITE_P(Of, EveryCollection, testing::ValuesIn(kWalked),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(Iterator, ChildrenOfATreeNeedOne) {
    EXPECT_ASSERTION(oru_do_dtree_has_next_child(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_dtree_get_next_child(nullptr), "iter");
}

TEST(Iterator, ConstraintsPassForResourcesAndTablesForPropertiesLists) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    ORUDoConstraintList *constraints = oru_do_constraint_list_new();
    oru_do_constraint_list_iter(constraints, &iter);
    EXPECT_EQ(oru_do_mr_meta_list_has_next(&iter), 0);
    EXPECT_ASSERTION(oru_do_vtable_has_next(&iter), "iter->coll_type == DO_COLL_PROPERTIES_LIST");
    oru_do_constraint_list_deref(constraints);

    ORUDoVtable *table = oru_do_vtable_new();
    oru_do_vtable_iter(table, &iter);
    EXPECT_EQ(oru_do_properties_list_has_next(&iter), 0);
    EXPECT_ASSERTION(oru_do_constraint_list_has_next(&iter),
                     "iter->coll_type == DO_COLL_MR_META_LIST");
    oru_do_vtable_deref(table);
}

TEST(Iterator, AFreshOneIsRefused) {
    ORUDoIter *iter = oru_do_iter_new();
    EXPECT_ASSERTION(oru_do_vlist_has_next(iter), "iter->coll_type == DO_COLL_VLIST");
    oru_do_iter_deref(iter);
}

}  // namespace
