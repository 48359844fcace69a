#include "oru/prop_meta.h"

#include <gtest/gtest.h>
#include <oru/constraint.h>
#include <oru/name.h>
#include <oru/typedef_meta.h>

#include <string>
#include <vector>

#include "tests/support/death.h"
#include "tests/support/oom.h"

namespace {

ORUDoPropMeta *new_prop(const char *text, int32_t category = ORU_PROP_CONFIG,
                        int32_t role = ORU_REF_NONE, uint8_t access = 2) {
    auto *name = oru_do_name_new(text);
    auto *type = oru_do_name_new("int");
    auto *prop = oru_do_prop_meta_new(name, category, 0, 0, nullptr, 5, type, ORU_MULTIPLICITY_ONE,
                                      role, access, 1);
    oru_do_name_deref(name);
    oru_do_name_deref(type);
    return prop;
}

TEST(PropMeta, KeepsItsFields) {
    auto *name = oru_do_name_new("index");
    auto *type = oru_do_name_new("unsignedInt");
    auto *first = new_prop("id", ORU_PROP_KEY);
    auto *meta = oru_do_prop_meta_new(name, ORU_PROP_KEY, 1, 2, first, 4, type,
                                      ORU_MULTIPLICITY_MANY, ORU_REF_PEER, 7, 1);
    EXPECT_EQ(oru_do_prop_meta_get_name(meta), name);
    EXPECT_EQ(oru_do_prop_meta_get_category(meta), 0);
    EXPECT_EQ(oru_do_prop_meta_is_primary_key(meta), 1);
    EXPECT_EQ(oru_do_prop_meta_get_key_idx(meta), 2);
    EXPECT_EQ(oru_do_prop_meta_get_first_key_in_group(meta), first);
    EXPECT_EQ(oru_do_prop_meta_get_typecode(meta), 4);
    EXPECT_EQ(oru_do_prop_meta_get_type_name(meta), type);
    EXPECT_EQ(oru_do_prop_meta_get_multiplicity(meta), 2);
    EXPECT_EQ(oru_do_prop_meta_get_ref_role(meta), 3);
    EXPECT_EQ(oru_do_prop_meta_get_max_access(meta), 7);
    EXPECT_EQ(oru_do_prop_meta_is_persistent(meta), 1);
    EXPECT_EQ(oru_do_prop_meta_get_typedef_meta(meta), nullptr);
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(meta), nullptr);
    EXPECT_EQ(oru_do_prop_meta_get_constraint(meta, 0), nullptr);
    oru_do_name_deref(name);
    oru_do_name_deref(type);
    oru_do_prop_meta_deref(first);
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_prop_meta_get_name(meta)), "index");
    oru_do_prop_meta_deref(meta);
}

TEST(PropMeta, SettersWriteTheFields) {
    auto *meta = new_prop("a");
    oru_do_prop_meta_set_typecode(meta, 103);
    oru_do_prop_meta_set_ref_role(meta, ORU_REF_PARENT);
    EXPECT_EQ(oru_do_prop_meta_get_typecode(meta), 103);
    EXPECT_EQ(oru_do_prop_meta_get_ref_role(meta), 2);
    auto *type = oru_do_typedef_meta_new_builtin(5, nullptr);
    auto *list = oru_do_constraint_list_new();
    oru_do_prop_meta_set_typedef_meta(meta, type, nullptr);
    oru_do_prop_meta_set_constraint_list(meta, list);
    oru_do_typedef_meta_deref(type);
    oru_do_constraint_list_deref(list);
    EXPECT_EQ(oru_do_prop_meta_get_typedef_meta(meta), type);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(type), 5);
    EXPECT_EQ(oru_do_prop_meta_get_constraint_list(meta), list);
    EXPECT_EQ(oru_do_prop_meta_get_constraint(meta, 0), nullptr);
    oru_do_prop_meta_deref(meta);
}

TEST(PropMeta, EarlierTypeAndConstraintsStayCounted) {
    auto *meta = new_prop("a");
    auto *type = oru_do_typedef_meta_new_builtin(5, nullptr);
    auto *list = oru_do_constraint_list_new();
    oru_do_prop_meta_set_typedef_meta(meta, type, nullptr);
    oru_do_prop_meta_set_typedef_meta(meta, nullptr, nullptr);
    oru_do_prop_meta_set_constraint_list(meta, list);
    auto *other = oru_do_constraint_list_new();
    oru_do_prop_meta_set_constraint_list(meta, other);
    oru_do_prop_meta_deref(meta);
    oru_do_constraint_list_deref(other);
    // The references that the property took are still there to be given back.
    oru_do_typedef_meta_deref(type);
    oru_do_constraint_list_deref(list);
    EXPECT_EQ(oru_do_typedef_meta_get_simple_type(type), 5);
    EXPECT_EQ(oru_do_constraint_list_get_len(list), 0);
    oru_do_typedef_meta_deref(type);
    oru_do_constraint_list_deref(list);
}

TEST(PropMeta, AccessIsSaidYesToWhateverTheBits) {
    for (const uint8_t access : {uint8_t{0}, uint8_t{7}}) {
        auto *meta = new_prop("a", ORU_PROP_OPER, ORU_REF_NONE, access);
        EXPECT_EQ(oru_do_prop_meta_is_oper_data(meta), access == 0);
        EXPECT_EQ(oru_do_prop_meta_is_readable(meta), 1);
        EXPECT_EQ(oru_do_prop_meta_is_writeable(meta), 1);
        EXPECT_EQ(oru_do_prop_meta_is_createable(meta), 1);
        oru_do_prop_meta_deref(meta);
    }
}

TEST(PropMeta, FiveAttributesAreBuiltIn) {
    for (const char *name : {"_mr", "_uri", "_pendingAttrs", "_snmpIdx", "_sequenceNumber"})
        EXPECT_EQ(oru_attribute_is_builtin(name), 1) << name;
    for (const char *name : {"", "mr", "_uri2", "_coll_uri", "_timestamp", "_URI"})
        EXPECT_EQ(oru_attribute_is_builtin(name), 0) << name;
    EXPECT_ASSERTION(oru_attribute_is_builtin(nullptr), "name");
}

TEST(PropMeta, WithoutMemoryThereIsNone) {
    auto *name = oru_do_name_new("a");
    oru::test::sweep_oom([name] {
        auto *meta = oru_do_prop_meta_new(name, 2, 0, 0, nullptr, 5, name, 1, 0, 1, 0);
        EXPECT_EQ(meta == nullptr, oru::test::oom_hit());
        oru_do_prop_meta_deref(meta);
    });
    oru::test::sweep_oom([] {
        auto *list = oru_do_prop_meta_list_new();
        EXPECT_EQ(list == nullptr, oru::test::oom_hit());
        oru_do_prop_meta_list_deref(list);
    });
    oru_do_name_deref(name);
}

TEST(PropMeta, NullIsRefusedByName) {
    EXPECT_ASSERTION(oru_do_prop_meta_get_name(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_category(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_type_name(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_typecode(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_typedef_meta(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_max_access(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_is_primary_key(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_key_idx(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_first_key_in_group(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_multiplicity(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_ref_role(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_constraint_list(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_is_persistent(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_get_constraint(nullptr, 0), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_is_oper_data(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_is_readable(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_is_writeable(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_is_createable(nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_set_typecode(nullptr, 0), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_set_ref_role(nullptr, 0), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_set_typedef_meta(nullptr, nullptr, nullptr), "meta");
    EXPECT_ASSERTION(oru_do_prop_meta_set_constraint_list(nullptr, nullptr), "meta");
    auto *meta = new_prop("a");
    EXPECT_ASSERTION(oru_do_prop_meta_set_constraint_list(meta, nullptr), "constraint_list");
    oru_do_prop_meta_deref(meta);
    EXPECT_EQ(oru_do_prop_meta_ref(nullptr), nullptr);
    oru_do_prop_meta_deref(nullptr);
}

// ---- Lists ----

struct PropMetaList : testing::Test {
    ~PropMetaList() override { oru_do_prop_meta_list_deref(list); }

    void add(const char *name) {
        auto *prop = new_prop(name);
        oru_do_prop_meta_list_add(list, prop);
        oru_do_prop_meta_deref(prop);
    }
    int32_t insert(const char *name, int32_t index) {
        auto *prop = new_prop(name);
        const int32_t result = oru_do_prop_meta_list_add_at_index(list, prop, index);
        oru_do_prop_meta_deref(prop);
        return result;
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        ORUDoIter iter;
        oru_do_iter_init(&iter);
        oru_do_prop_meta_list_iter(list, &iter);
        while (oru_do_prop_meta_list_has_next(&iter) != 0)
            found.push_back(oru_do_name_get_strname(
                oru_do_prop_meta_get_name(oru_do_prop_meta_list_get_next(&iter))));
        EXPECT_EQ(oru_do_prop_meta_list_get_next(&iter), nullptr);
        return found;
    }

    ORUDoPropMetaList *list = oru_do_prop_meta_list_new();
};

using Names = std::vector<std::string>;

TEST_F(PropMetaList, AddGivesTheNewLength) {
    auto *prop = new_prop("a");
    EXPECT_EQ(oru_do_prop_meta_list_add(list, prop), 1);
    EXPECT_EQ(oru_do_prop_meta_list_add(list, prop), 2);
    EXPECT_EQ(oru_do_prop_meta_list_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_prop_meta_list_get_len(list), 2);
    EXPECT_EQ(oru_do_prop_meta_list_get_prop_meta(list, 1), prop);
    EXPECT_EQ(oru_do_prop_meta_list_get_prop_meta(list, 2), nullptr);
    EXPECT_EQ(oru_do_prop_meta_list_get_prop_meta(list, -1), nullptr);
    oru_do_prop_meta_deref(prop);
}

TEST_F(PropMetaList, AddAtIndexIntoAnEmptyListTakesAnyIndex) {
    EXPECT_EQ(insert("a", 7), 1);
    EXPECT_EQ(names(), Names{"a"});
}

TEST_F(PropMetaList, AddAtIndexPutsInFrontBetweenAndBehind) {
    add("a");
    add("b");
    EXPECT_EQ(insert("front", 0), 1);
    EXPECT_EQ(insert("middle", 2), 1);
    EXPECT_EQ(insert("end", 4), 1);
    EXPECT_EQ(names(), (Names{"front", "a", "middle", "b", "end"}));
    add("last");  // goes behind what became the last entry
    EXPECT_EQ(names().back(), "last");
}

TEST_F(PropMetaList, AddAtIndexPastTheEndIsRefused) {
    add("a");
    add("b");
    EXPECT_EQ(insert("c", 3), -1);
    EXPECT_EQ(insert("c", -1), -1);
    EXPECT_EQ(insert("c", 2), 1);
    EXPECT_EQ(names(), (Names{"a", "b", "c"}));
}

TEST_F(PropMetaList, AddAtIndexOfNothingGivesOne) {
    EXPECT_EQ(oru_do_prop_meta_list_add_at_index(list, nullptr, 0), 1);
    EXPECT_EQ(oru_do_prop_meta_list_get_len(list), 0);
}

TEST_F(PropMetaList, FindsTheFirstOfAName) {
    add("a");
    add("b");
    add("b");
    auto *name = oru_do_name_new("b");
    auto *found = oru_do_prop_meta_list_get_prop_meta_name(list, name);
    EXPECT_EQ(found, oru_do_prop_meta_list_get_prop_meta(list, 1));
    EXPECT_EQ(oru_do_prop_meta_list_get_prop_meta_strname(list, "b"), found);
    EXPECT_EQ(oru_do_prop_meta_list_get_prop_meta_strname(list, "c"), nullptr);
    oru_do_name_deref(name);
}

TEST_F(PropMetaList, EntryWithoutANameIsRefused) {
    auto *nameless = oru_do_prop_meta_new(nullptr, 0, 0, 0, nullptr, 5, nullptr, 1, 0, 1, 0);
    oru_do_prop_meta_list_add(list, nameless);
    oru_do_prop_meta_deref(nameless);
    auto *name = oru_do_name_new("b");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_prop_meta_name(list, name), "cur_name");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_prop_meta_strname(list, "b"), "cur_name");
    oru_do_name_deref(name);
}

TEST_F(PropMetaList, ClearLeavesAListThatWorks) {
    add("a");
    oru_do_prop_meta_list_clear(list);
    EXPECT_EQ(oru_do_prop_meta_list_get_len(list), 0);
    add("b");
    EXPECT_EQ(names(), Names{"b"});
}

TEST_F(PropMetaList, NullIsRefusedByName) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_prop_meta_list_add(nullptr, nullptr), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_add_at_index(nullptr, nullptr, 0), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_len(nullptr), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_prop_meta(nullptr, 0), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_prop_meta_name(nullptr, nullptr), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_prop_meta_name(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_prop_meta_strname(nullptr, "a"), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_prop_meta_strname(list, nullptr), "name");
    EXPECT_ASSERTION(oru_do_prop_meta_list_clear(nullptr), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_iter(nullptr, &iter), "list");
    EXPECT_ASSERTION(oru_do_prop_meta_list_iter(list, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_prop_meta_list_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_prop_meta_list_has_next(&iter),
                     "iter->coll_type == DO_COLL_PROP_META_LIST");
    EXPECT_ASSERTION(oru_do_prop_meta_list_get_next(nullptr), "iter");
    EXPECT_EQ(oru_do_prop_meta_list_ref(nullptr), nullptr);
    oru_do_prop_meta_list_deref(nullptr);
}

TEST_F(PropMetaList, WithoutMemoryNothingIsAdded) {
    oru::test::sweep_oom(
        [] {
            auto *prop = new_prop("a");
            auto *some = oru_do_prop_meta_list_new();
            if (some != nullptr && prop != nullptr) {
                const int32_t length = oru_do_prop_meta_list_add(some, prop);
                EXPECT_EQ(oru_do_prop_meta_list_get_len(some), length < 0 ? 0 : 1);
                const int32_t result = oru_do_prop_meta_list_add_at_index(some, prop, 0);
                EXPECT_TRUE(result == 1 || oru::test::oom_hit());
            }
            oru_do_prop_meta_list_deref(some);
            oru_do_prop_meta_deref(prop);
        },
        {}, nullptr);
}

}  // namespace
