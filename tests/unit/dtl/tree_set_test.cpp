#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstring>
#include <string>
#include <vector>

#include "oru/error.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/dtl/tree_support.h"

namespace {

using namespace oru::test;

const char *text_of(ORUDoName *name) {
    return oru_do_name_get_strname(name);
}

class DtlTreeSet : public testing::Test {
  protected:
    void SetUp() override { oru_dtl_tree_init_mr_info(node.get(), nullptr, nullptr); }

    Tree node{oru_dtl_tree_new()};
    Tree bare{oru_dtl_tree_new()};
    Name name{oru_do_name_new("mtu")};
    Value value{oru_do_value_new_int(1500)};
};

TEST_F(DtlTreeSet, NumbersAreWrittenAsTheyAre) {
    oru_dtl_tree_set_type(node.get(), 11);
    oru_dtl_tree_set_op(node.get(), 17);
    oru_dtl_tree_set_batch_size(node.get(), -3);
    oru_dtl_tree_set_max_batches(node.get(), INT32_MAX);
    EXPECT_EQ(node->type, 11);
    EXPECT_EQ(node->op, 17);
    EXPECT_EQ(oru_dtl_tree_get_batch_size(node.get()), -3);
    EXPECT_EQ(oru_dtl_tree_get_max_batches(node.get()), INT32_MAX);
}

TEST_F(DtlTreeSet, ThePropertyNamePartsFromTheName) {
    oru_dtl_tree_set_prop_name(node.get(), "speed");
    EXPECT_STREQ(text_of(node->prop_name), "speed");
    EXPECT_STREQ(text_of(node->name), "");
    oru_dtl_tree_set_prop_name(node.get(), nullptr);
    EXPECT_STREQ(text_of(node->prop_name), "speed");
    oru_dtl_tree_set_prop_name(nullptr, "speed");
}

TEST(DtlTreeDefault, NumbersGetANewlineBehindThem) {
    struct Case {
        const char *text;
        const char *stored;
    };
    for (const auto &[text, stored] : {Case{"5", "5\n"}, Case{"-5", "-5\n"}, Case{"-x", "-x"},
                                       Case{"-", "-"}, Case{"12ab", "12ab\n"}, Case{"x5", "x5"},
                                       Case{"$n", "$n"}, Case{"--5", "--5"}, Case{" 5", " 5"}}) {
        const Tree node(oru_dtl_tree_new());
        oru_dtl_tree_set_default_expr(node.get(), text);
        EXPECT_STREQ(node->default_expr, stored);
    }
}

TEST_F(DtlTreeSet, AnEmptyDefaultIsNone) {
    oru_dtl_tree_set_default_expr(node.get(), "");
    EXPECT_EQ(node->default_expr, nullptr);
    oru_dtl_tree_set_default_expr(node.get(), "a");
    oru_dtl_tree_set_default_expr(node.get(), "");
    oru_dtl_tree_set_default_expr(node.get(), nullptr);
    EXPECT_STREQ(node->default_expr, "a");
}

TEST_F(DtlTreeSet, AnEarlierDefaultStaysWithWhoReadsIt) {
    oru_dtl_tree_set_default_expr(node.get(), "a");
    char *first = node->default_expr;
    oru_dtl_tree_set_default_expr(node.get(), "b");
    EXPECT_STREQ(first, "a");
    EXPECT_STREQ(node->default_expr, "b");
    ph_free_named(first);
}

TEST_F(DtlTreeSet, TheErrorIsReplacedAndCleared) {
    ORUDoError *first = oru_do_error_new(1, "first");
    ORUDoError *second = oru_do_error_new(2, "second");
    oru_dtl_tree_set_error(node.get(), first);
    oru_dtl_tree_set_error(node.get(), first);
    EXPECT_EQ(node->error, first);
    oru_do_error_deref(first);
    oru_dtl_tree_set_error(node.get(), second);
    EXPECT_EQ(node->error, second);
    oru_dtl_tree_set_error(node.get(), nullptr);
    EXPECT_EQ(node->error, nullptr);
    EXPECT_STREQ(oru_do_error_get_msg(second), "second");
    oru_do_error_deref(second);
}

TEST_F(DtlTreeSet, FlagsAreWrittenWhole) {
    oru_dtl_tree_set_return_default(node.get(), 0);
    oru_dtl_tree_set_return_w_child(node.get(), 2);
    oru_dtl_tree_set_use_where_clause_once(node.get(), 255);
    oru_dtl_tree_set_continue_on_error(node.get(), 1);
    EXPECT_EQ(node->mr_info->return_default, 0);
    EXPECT_EQ(node->mr_info->return_w_child, 2);
    EXPECT_EQ(oru_dtl_tree_return_w_child(node.get()), 1);
    EXPECT_EQ(node->mr_info->use_where_clause_once, 255);
    EXPECT_EQ(oru_dtl_tree_continue_on_error(node.get()), 1);
    oru_dtl_tree_set_continue_on_error(node.get(), 0);
    EXPECT_EQ(oru_dtl_tree_continue_on_error(node.get()), 0);
}

TEST_F(DtlTreeSet, TheReturnModeIsOneOrLast) {
    oru_dtl_tree_set_return_one(node.get());
    EXPECT_EQ(node->mr_info->return_mode, ORU_DTL_RETURN_ONE);
    EXPECT_EQ(oru_dtl_tree_return_one(node.get()), 1);
    EXPECT_EQ(oru_dtl_tree_return_last(node.get()), 0);
    oru_dtl_tree_set_return_last(node.get());
    EXPECT_EQ(oru_dtl_tree_return_one(node.get()), 0);
    EXPECT_EQ(oru_dtl_tree_return_last(node.get()), 1);
}

TEST_F(DtlTreeSet, FlattenIsSetByOneWordAndNeverCleared) {
    for (const char *text : {"false", "TRUE", "true ", "", static_cast<const char *>(nullptr)})
        oru_dtl_tree_set_flatten(node.get(), text);
    EXPECT_EQ(oru_dtl_tree_flatten(node.get()), 0);
    oru_dtl_tree_set_flatten(node.get(), "true");
    oru_dtl_tree_set_flatten(node.get(), "false");
    EXPECT_EQ(oru_dtl_tree_flatten(node.get()), 1);
}

TEST_F(DtlTreeSet, TextsAreCopied) {
    std::string text = "$n";
    oru_dtl_tree_set_batch_size_param(node.get(), text.c_str());
    oru_dtl_tree_set_max_batches_param(node.get(), "$m");
    oru_dtl_tree_set_order_param(node.get(), "");
    text = "xx";
    EXPECT_STREQ(oru_dtl_tree_get_batch_size_param(node.get()), "$n");
    EXPECT_STREQ(oru_dtl_tree_get_max_batches_param(node.get()), "$m");
    EXPECT_STREQ(oru_dtl_tree_get_order_param(node.get()), "");
    oru_dtl_tree_set_batch_size_param(node.get(), nullptr);
    EXPECT_STREQ(oru_dtl_tree_get_batch_size_param(node.get()), "$n");
}

TEST_F(DtlTreeSet, AnEarlierTextStaysWithWhoReadsIt) {
    oru_dtl_tree_set_order_param(node.get(), "a");
    char *first = node->mr_info->order_param;
    oru_dtl_tree_set_order_param(node.get(), "b");
    EXPECT_STREQ(first, "a");
    EXPECT_STREQ(oru_dtl_tree_get_order_param(node.get()), "b");
    ph_free_named(first);
}

TEST_F(DtlTreeSet, TheSelectionIsReplaced) {
    oru_dtl_tree_set_attr_select(node.get(), "[\"a\"]");
    oru_dtl_tree_set_attr_select(node.get(), "$s");
    oru_dtl_tree_set_attr_select(node.get(), nullptr);
    EXPECT_STREQ(text_of(node->mr_info->attr_select), "$s");
}

TEST_F(DtlTreeSet, ListsAreMadeAtFirstUse) {
    const Name other(oru_do_name_new("speed"));
    using Add = void (*)(ORUDtlNode *, ORUDoName *);
    const std::vector<std::pair<Add, ORUDoNlist *ORUDtlMrInfo::*>> lists = {
        {oru_dtl_tree_add_cfg_attr, &ORUDtlMrInfo::cfg_attr_nlist},
        {oru_dtl_tree_add_oper_attr, &ORUDtlMrInfo::oper_attr_nlist},
        {oru_dtl_tree_add_cfg_data, &ORUDtlMrInfo::cfg_data_nlist},
        {oru_dtl_tree_add_oper_data, &ORUDtlMrInfo::oper_data_nlist},
        {oru_dtl_tree_add_order_by, &ORUDtlMrInfo::order_by},
    };
    for (const auto &[add, list] : lists) {
        EXPECT_EQ(node->mr_info->*list, nullptr);
        add(node.get(), name.get());
        add(node.get(), other.get());
        ASSERT_EQ(oru_do_nlist_get_len(node->mr_info->*list), 2);
        EXPECT_EQ(oru_do_nlist_get_name(node->mr_info->*list, 0), name.get());
        EXPECT_EQ(oru_do_nlist_get_name(node->mr_info->*list, 1), other.get());
    }
}

TEST_F(DtlTreeSet, WhereClausesGrowAndAreReplaced) {
    oru_dtl_tree_add_where_clause(node.get(), "mtu >=", value.get());
    oru_dtl_tree_add_where_clause(node.get(), "mtu <=", value.get());
    EXPECT_EQ(oru_do_nvlist_get_len(node->mr_info->where_clause), 2);
    EXPECT_EQ(oru_do_nvlist_get_value(node->mr_info->where_clause, "mtu <="), value.get());
    const Nvlist whole(oru_do_nvlist_new());
    oru_dtl_tree_set_where_clause(node.get(), whole.get());
    oru_dtl_tree_set_where_clause(node.get(), node->mr_info->where_clause);
    EXPECT_EQ(node->mr_info->where_clause, whole.get());
}

TEST_F(DtlTreeSet, AnActionStartsWithoutParameters) {
    oru_dtl_tree_set_act_in_param(node.get(), name.get(), value.get());
    EXPECT_EQ(oru_do_properties_get_len(node->mr_info->act_in_params), 1);
    EXPECT_EQ(node->mr_info->act_name, nullptr);
    oru_dtl_tree_set_act_name(node.get(), name.get());
    EXPECT_EQ(node->mr_info->act_name, name.get());
    EXPECT_EQ(oru_do_properties_get_len(node->mr_info->act_in_params), 0);
    oru_dtl_tree_set_act_in_param(node.get(), name.get(), value.get());
    const Value other(oru_do_value_new_int(9000));
    oru_dtl_tree_set_act_in_param(node.get(), name.get(), other.get());
    EXPECT_EQ(oru_do_properties_get_len(node->mr_info->act_in_params), 1);
    EXPECT_EQ(oru_do_properties_get_value(node->mr_info->act_in_params, "mtu"), other.get());
    oru_dtl_tree_set_act_name(node.get(), node->mr_info->act_name);
    EXPECT_STREQ(text_of(node->mr_info->act_name), "mtu");
    EXPECT_EQ(oru_do_properties_get_len(node->mr_info->act_in_params), 0);
}

TEST_F(DtlTreeSet, WithoutAnMrInfoNothingChanges) {
    ORUDtlNode before;
    std::memcpy(&before, bare.get(), sizeof before);
    const Nvlist where(oru_do_nvlist_new());
    ORUDtlNode *n = bare.get();
    oru_dtl_tree_set_return_default(n, 0);
    oru_dtl_tree_set_return_w_child(n, 1);
    oru_dtl_tree_set_use_where_clause_once(n, 1);
    oru_dtl_tree_set_continue_on_error(n, 1);
    oru_dtl_tree_set_return_one(n);
    oru_dtl_tree_set_return_last(n);
    oru_dtl_tree_set_flatten(n, "true");
    oru_dtl_tree_set_batch_size_param(n, "$n");
    oru_dtl_tree_set_max_batches_param(n, "$n");
    oru_dtl_tree_set_order_param(n, "a");
    oru_dtl_tree_set_attr_select(n, "[]");
    oru_dtl_tree_add_cfg_attr(n, name.get());
    oru_dtl_tree_add_oper_attr(n, name.get());
    oru_dtl_tree_add_cfg_data(n, name.get());
    oru_dtl_tree_add_oper_data(n, name.get());
    oru_dtl_tree_add_order_by(n, name.get());
    oru_dtl_tree_add_where_clause(n, "a", value.get());
    oru_dtl_tree_set_where_clause(n, where.get());
    oru_dtl_tree_set_act_name(n, name.get());
    oru_dtl_tree_set_act_in_param(n, name.get(), value.get());
    EXPECT_EQ(std::memcmp(&before, bare.get(), sizeof before), 0);
}

TEST_F(DtlTreeSet, ANullNodeIsRefusedByAll) {
    EXPECT_ASSERTION(oru_dtl_tree_set_type(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_op(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_batch_size(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_max_batches(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_default_expr(nullptr, "a"), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_error(nullptr, nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_return_default(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_return_w_child(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_use_where_clause_once(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_continue_on_error(nullptr, 1), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_return_one(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_return_last(nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_flatten(nullptr, "true"), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_batch_size_param(nullptr, "a"), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_max_batches_param(nullptr, "a"), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_order_param(nullptr, "a"), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_attr_select(nullptr, "a"), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_add_cfg_attr(nullptr, name.get()), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_add_oper_attr(nullptr, name.get()), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_add_cfg_data(nullptr, name.get()), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_add_oper_data(nullptr, name.get()), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_add_order_by(nullptr, name.get()), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_add_where_clause(nullptr, "a", value.get()), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_where_clause(nullptr, nullptr), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_act_name(nullptr, name.get()), "dtl_node");
    EXPECT_ASSERTION(oru_dtl_tree_set_act_in_param(nullptr, name.get(), value.get()), "dtl_node");
}

TEST_F(DtlTreeSet, NullElementsAreRefusedByName) {
    ORUDtlNode *n = bare.get();
    EXPECT_ASSERTION(oru_dtl_tree_add_cfg_attr(n, nullptr), "attr_name");
    EXPECT_ASSERTION(oru_dtl_tree_add_oper_attr(n, nullptr), "attr_name");
    EXPECT_ASSERTION(oru_dtl_tree_add_cfg_data(n, nullptr), "cfg_data");
    EXPECT_ASSERTION(oru_dtl_tree_add_oper_data(n, nullptr), "oper_data");
    EXPECT_ASSERTION(oru_dtl_tree_add_order_by(n, nullptr), "name");
    EXPECT_ASSERTION(oru_dtl_tree_add_where_clause(n, nullptr, value.get()), "name");
    EXPECT_ASSERTION(oru_dtl_tree_add_where_clause(n, "a", nullptr), "value");
    EXPECT_ASSERTION(oru_dtl_tree_set_where_clause(n, nullptr), "where_nvlist");
    EXPECT_ASSERTION(oru_dtl_tree_set_act_name(n, nullptr), "act_name");
    EXPECT_ASSERTION(oru_dtl_tree_set_act_in_param(n, nullptr, value.get()), "param_name");
    EXPECT_ASSERTION(oru_dtl_tree_set_act_in_param(n, name.get(), nullptr), "param_value");
}

TEST(DtlTreeWeak, BothSayTheSame) {
    const char *words = "Invoking weak definition of ORU dtl's tree_add_oper_attr_opt function";
    TraceCapture traces;
    oru_dtl_tree_add_cfg_attr_opt();
    oru_dtl_tree_add_oper_attr_opt();
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{3, words}, {3, words}}));
}

}  // namespace
