// The records of descriptions in memory, field by field, and what all of them do with their count.
#include <gtest/gtest.h>
#include <oru/act_meta.h>
#include <oru/constraint.h>
#include <oru/mr_meta.h>
#include <oru/name.h>
#include <oru/ntlist.h>
#include <oru/nvlist.h>
#include <oru/prop_meta.h>
#include <oru/typedef_meta.h>

#include <string>
#include <vector>

#include "tests/support/death.h"
#include "tests/support/trace_capture.h"

namespace {

using namespace oru::test;

struct BoolRecord {
    uint32_t ref;
    int32_t value;
};

struct MrRecord {
    ORUDoName *pkg_name, *mr_name, *mr_fq_name;
    ORUDoMrMetaBool *is_non_persistent;
    ORUDoActMetaList *act_meta_list;
    ORUDoPropMetaList *prop_meta_list;
    ORUDoMrMetaList *impl_mr_meta;
    uint32_t ref;
    uint8_t max_access;
    int32_t is_lib_mr;
};

struct PropRecord {
    ORUDoName *name;
    ORUDoPropMeta *first_key_in_group;
    ORUDoName *type_name;
    ORUDoConstraintList *constraint_list;
    ORUDoTypedefMeta *typedef_meta;
    uint32_t ref;
    int32_t key_idx, persistent, primary_key, category, ref_role, multiplicity, typecode;
    uint8_t max_access;
};

struct ActRecord {
    ORUDoName *name;
    ORUDoPropMetaList *in_params, *out_params, *err_params;
    uint32_t ref;
};

struct TypedefRecord {
    ORUDoName *name;
    void *payload;
    uint32_t ref;
    int32_t category;
};

struct SimpleRecord {
    int32_t typecode;
    ORUDoConstraintList *constraint_list;
};

struct ListRecord {
    void *first, *last;
    uint32_t count, ref;
};

template <class Record, class Object>
const Record &record(const Object *object) {
    return *reinterpret_cast<const Record *>(object);
}

struct MetaRecord : testing::Test {
    ~MetaRecord() override {
        oru_do_name_deref(name);
        oru_do_name_deref(other);
        oru_do_prop_meta_list_deref(props);
    }
    ORUDoName *name = oru_do_name_new("a");
    ORUDoName *other = oru_do_name_new("b");
    ORUDoPropMetaList *props = oru_do_prop_meta_list_new();
};

TEST_F(MetaRecord, OfAResource) {
    auto *flag = oru_do_mr_meta_bool_new(7);
    EXPECT_EQ(record<BoolRecord>(flag).ref, 1u);
    EXPECT_EQ(record<BoolRecord>(flag).value, 7);
    auto *meta = oru_do_mr_meta_new(name, "1", other, 13, props, flag);
    oru_do_mr_meta_add_impl_mr_meta(meta, nullptr);
    oru_do_mr_meta_set_is_lib_mr(meta, 9);
    auto *actions = oru_do_act_meta_list_new();
    oru_do_mr_meta_set_act_meta_list(meta, actions);
    oru_do_mr_meta_ref(meta);
    const auto &fields = record<MrRecord>(meta);
    EXPECT_EQ(fields.pkg_name, name);
    EXPECT_EQ(fields.mr_name, other);
    EXPECT_STREQ(oru_do_name_get_strname(fields.mr_fq_name), "a:1/b");
    EXPECT_EQ(fields.is_non_persistent, flag);
    EXPECT_EQ(record<BoolRecord>(flag).ref, 2u);
    EXPECT_EQ(fields.act_meta_list, actions);
    EXPECT_EQ(fields.prop_meta_list, props);
    EXPECT_EQ(fields.impl_mr_meta, oru_do_mr_meta_get_impl_mr_meta(meta));
    EXPECT_NE(fields.impl_mr_meta, nullptr);
    EXPECT_EQ(fields.ref, 2u);
    EXPECT_EQ(fields.max_access, 13);
    EXPECT_EQ(fields.is_lib_mr, 9);
    oru_do_mr_meta_deref(meta);
    oru_do_mr_meta_deref(meta);
    oru_do_act_meta_list_deref(actions);
    oru_do_mr_meta_bool_deref(flag);
}

TEST_F(MetaRecord, OfAProperty) {
    auto *first = oru_do_prop_meta_new(name, 0, 1, 1, nullptr, 5, name, 1, 0, 1, 0);
    auto *meta = oru_do_prop_meta_new(name, 3, 11, 12, first, 14, other, 2, 1, 5, 15);
    auto *type = oru_do_typedef_meta_new_builtin(8, nullptr);
    auto *list = oru_do_constraint_list_new();
    oru_do_prop_meta_set_typedef_meta(meta, type, nullptr);
    oru_do_prop_meta_set_constraint_list(meta, list);
    const auto &fields = record<PropRecord>(meta);
    EXPECT_EQ(fields.name, name);
    EXPECT_EQ(fields.first_key_in_group, first);
    EXPECT_EQ(record<PropRecord>(first).ref, 1u);  // is not counted
    EXPECT_EQ(fields.type_name, other);
    EXPECT_EQ(fields.constraint_list, list);
    EXPECT_EQ(fields.typedef_meta, type);
    EXPECT_EQ(fields.ref, 1u);
    EXPECT_EQ(fields.key_idx, 12);
    EXPECT_EQ(fields.persistent, 15);
    EXPECT_EQ(fields.primary_key, 11);
    EXPECT_EQ(fields.category, 3);
    EXPECT_EQ(fields.ref_role, 1);
    EXPECT_EQ(fields.multiplicity, 2);
    EXPECT_EQ(fields.typecode, 14);
    EXPECT_EQ(fields.max_access, 5);
    oru_do_constraint_list_deref(list);
    oru_do_typedef_meta_deref(type);
    oru_do_prop_meta_deref(meta);
    oru_do_prop_meta_deref(first);
}

TEST_F(MetaRecord, OfAnAction) {
    auto *out = oru_do_prop_meta_list_new(), *err = oru_do_prop_meta_list_new();
    auto *meta = oru_do_act_meta_new(name, props, out, err);
    const auto &fields = record<ActRecord>(meta);
    EXPECT_EQ(fields.name, name);
    EXPECT_EQ(fields.in_params, props);
    EXPECT_EQ(fields.out_params, out);
    EXPECT_EQ(fields.err_params, err);
    EXPECT_EQ(fields.ref, 1u);
    oru_do_act_meta_deref(meta);
    oru_do_prop_meta_list_deref(out);
    oru_do_prop_meta_list_deref(err);
}

TEST_F(MetaRecord, OfAType) {
    auto *list = oru_do_constraint_list_new();
    auto *simple = oru_do_typedef_meta_new_simpletype(name, 8, list);
    EXPECT_EQ(record<TypedefRecord>(simple).name, name);
    EXPECT_EQ(record<TypedefRecord>(simple).ref, 1u);
    EXPECT_EQ(record<TypedefRecord>(simple).category, 1);
    const auto &part = record<SimpleRecord>(record<TypedefRecord>(simple).payload);
    EXPECT_EQ(part.typecode, 8);
    EXPECT_EQ(part.constraint_list, list);
    auto *labels = oru_do_nvlist_new();
    auto *members = oru_do_ntlist_new();
    auto *enumeration = oru_do_typedef_meta_new_enum(name, labels);
    auto *choice = oru_do_typedef_meta_new_choice(name, members);
    EXPECT_EQ(record<TypedefRecord>(enumeration).payload, labels);
    EXPECT_EQ(record<TypedefRecord>(choice).payload, members);
    EXPECT_EQ(record<TypedefRecord>(choice).category, 4);
    for (auto *meta : {simple, enumeration, choice})
        oru_do_typedef_meta_deref(meta);
    oru_do_constraint_list_deref(list);
    oru_do_nvlist_deref(labels);
    oru_do_ntlist_deref(members);
}

TEST_F(MetaRecord, OfAList) {
    auto *prop = oru_do_prop_meta_new(name, 0, 1, 1, nullptr, 5, name, 1, 0, 1, 0);
    oru_do_prop_meta_list_add(props, prop);
    EXPECT_EQ(record<ListRecord>(props).first, record<ListRecord>(props).last);
    oru_do_prop_meta_list_add(props, prop);
    EXPECT_NE(record<ListRecord>(props).first, record<ListRecord>(props).last);
    EXPECT_EQ(record<ListRecord>(props).count, 2u);
    EXPECT_EQ(record<ListRecord>(props).ref, 1u);
    EXPECT_EQ(record<PropRecord>(prop).ref, 3u);
    oru_do_prop_meta_deref(prop);
    auto *mrs = oru_do_mr_meta_list_new();
    auto *actions = oru_do_act_meta_list_new();
    EXPECT_EQ(record<ListRecord>(mrs).ref, 1u);
    EXPECT_EQ(record<ListRecord>(actions).ref, 1u);
    EXPECT_EQ(record<ListRecord>(actions).last, nullptr);
    oru_do_mr_meta_list_deref(mrs);
    oru_do_act_meta_list_deref(actions);
}

// ---- Counts ----

template <class Record, class Object>
void release_once_too_often(void (*deref)(Object *)) {
    Record dead{};
    deref(reinterpret_cast<Object *>(&dead));
}

TEST(MetaCount, OneReleaseTooManyIsFatal) {
    EXPECT_FATAL(release_once_too_often<MrRecord>(oru_do_mr_meta_deref),
                 "Fatal problem in oru_do_mr_meta deref handling 0x");
    EXPECT_FATAL(release_once_too_often<BoolRecord>(oru_do_mr_meta_bool_deref),
                 "Fatal problem in oru_do_mr_meta_bool deref handling 0x");
    EXPECT_FATAL(release_once_too_often<ListRecord>(oru_do_mr_meta_list_deref),
                 "Fatal problem in oru_do_mr_meta_list deref handling 0x");
    EXPECT_FATAL(release_once_too_often<PropRecord>(oru_do_prop_meta_deref),
                 "Fatal problem in oru_do_prop_meta deref handling 0x");
    EXPECT_FATAL(release_once_too_often<ListRecord>(oru_do_prop_meta_list_deref),
                 "Fatal problem in oru_do_prop_meta_list deref handling 0x");
    EXPECT_FATAL(release_once_too_often<ActRecord>(oru_do_act_meta_deref),
                 "Fatal problem in oru_do_act_meta deref handling 0x");
    EXPECT_FATAL(release_once_too_often<ListRecord>(oru_do_act_meta_list_deref),
                 "Fatal problem in oru_do_act_meta_list deref handling 0x");
    EXPECT_FATAL(release_once_too_often<TypedefRecord>(oru_do_typedef_meta_deref),
                 "Fatal problem in oru_do_typedef_meta deref handling 0x");
    EXPECT_FATAL(release_once_too_often<ListRecord>(oru_do_constraint_list_deref),
                 "Fatal problem in oru_do_constraint_list deref handling 0x");
}

// What the last release gives back, in order.
TEST(MetaCount, MembersGoInTheOrderOfTheirFields) {
    auto *name = oru_do_name_new("a");
    auto *props = oru_do_prop_meta_list_new();
    auto *flag = oru_do_mr_meta_bool_new(0);
    auto *meta = oru_do_mr_meta_new(name, nullptr, name, 15, props, flag);
    TraceCapture traces(8);
    oru_do_mr_meta_deref(meta);
    std::vector<std::string> types;
    for (const auto &line : traces.at(8))
        types.push_back(line.substr(0, line.find(" 0x")));
    EXPECT_EQ(types, (std::vector<std::string>{"oru deref oru_do_mr_meta", "oru deref oru_do_name",
                                               "oru deref oru_do_name", "oru deref oru_do_name",
                                               "oru deref oru_do_mr_meta_bool",
                                               "oru deref oru_do_prop_meta_list"}));
    oru_do_name_deref(name);
    oru_do_prop_meta_list_deref(props);
    oru_do_mr_meta_bool_deref(flag);
}

}  // namespace
