#include <gtest/gtest.h>

#include "oru/error.h"
#include "tests/support/death.h"
#include "tests/unit/dtl/tree_support.h"

namespace {

using namespace oru::test;

TEST(DtlRender, ALeafIsOneElement) {
    const Tree doc(oru_dtl_tree_new());
    ORUDtlNode *a = add_node(doc.get(), "a", ORU_DTL_NODE_ATTR, ORU_DTL_OP_NOOP);
    const Strbuf text(oru_do_strbuf_new());
    EXPECT_EQ(oru_dtl_tree_to_xml(a, 0, text.get()), 29);
    EXPECT_STREQ(oru_do_strbuf_to_string(text.get()), "<a op=\"noop\" type=\"attr\"></a>");
}

TEST(DtlRender, NumbersErrorsAndPartsAreShown) {
    const Tree doc(oru_dtl_tree_new());
    const MrMeta meta = make_mr("Box", {});
    ORUDtlNode *a = add_mr_node(doc.get(), "a", 18, "/x;k=<1>", meta.get());
    const Name name(oru_do_name_new("n"));
    oru_dtl_tree_add_cfg_attr(a, name.get());
    oru_dtl_tree_add_order_by(a, name.get());
    oru_dtl_tree_set_batch_size(a, 3);
    oru_dtl_tree_set_max_batches(a, 2);
    ORUDoError *error = oru_do_error_new(1, "x");
    oru_dtl_tree_set_error(a, error);
    oru_do_error_deref(error);
    add_mr_node(a, "b", 2, "/y");
    const Strbuf text(oru_do_strbuf_new());
    oru_dtl_tree_to_xml(doc.get(), 1, text.get());
    EXPECT_STREQ(oru_do_strbuf_to_string(text.get()),
                 "<a op=\"(unknown)\" type=\"mr-op\" uri=\"/x;k=&lt;1&gt;\" mr=\"net/Box\" "
                 "info=\"(prop_meta_list)(cfg_attr_nlist)(order_by)\" has_err=\"true\" "
                 "batch-size=\"3\" max-batches=\"2\">\n"
                 "\t<b op=\"get\" type=\"mr-op\" uri=\"/y\" info=\"\">\n"
                 "\t</b>\n"
                 "</a>\n");
}

TEST(DtlRender, NullIsRefused) {
    const Tree doc(oru_dtl_tree_new());
    const Strbuf text(oru_do_strbuf_new());
    EXPECT_ASSERTION(oru_dtl_tree_to_xml(nullptr, 0, text.get()), "node");
    EXPECT_ASSERTION(oru_dtl_tree_to_xml(doc.get(), 0, nullptr), "buf");
}

TEST(DtlRender, EveryPartHasItsLabel) {
    const Tree doc(oru_dtl_tree_new());
    const MrMeta meta = make_mr("Box", {});
    ORUDtlNode *a = add_mr_node(doc.get(), "a", 17, "/x", meta.get());
    const Name name(oru_do_name_new("n"));
    const Value value(oru_do_value_new_int(1));
    oru_dtl_tree_add_order_by(a, name.get());
    oru_dtl_tree_add_where_clause(a, "n", value.get());
    oru_dtl_tree_set_act_name(a, name.get());
    oru_dtl_tree_add_oper_data(a, name.get());
    oru_dtl_tree_add_cfg_data(a, name.get());
    oru_dtl_tree_add_oper_attr(a, name.get());
    oru_dtl_tree_add_cfg_attr(a, name.get());
    const Strbuf text(oru_do_strbuf_new());
    oru_dtl_tree_to_xml(doc.get(), 0, text.get());
    EXPECT_STREQ(oru_do_strbuf_to_string(text.get()),
                 "<a op=\"coll:action\" type=\"mr-op\" uri=\"/x\" mr=\"net/Box\" "
                 "info=\"(prop_meta_list)(cfg_attr_nlist)(oper_attr_nlist)(cfg_data_nlist)"
                 "(oper_data_nlist)(act_name)(act_in_params)(where_clause)(order_by)\"></a>");
}

TEST(DtlRender, OnlyTheFirstRootOfADocumentIsShown) {
    const Tree doc(oru_dtl_tree_new());
    ORUDtlNode *a = add_node(doc.get(), "a", 14, ORU_DTL_OP_NOOP);
    add_node(doc.get(), "b", ORU_DTL_NODE_ROOT, ORU_DTL_OP_NOOP);
    add_node(a, "c", ORU_DTL_NODE_CFG_DATA, ORU_DTL_OP_NOOP);
    oru_dtl_tree_init_mr_info(a, nullptr, nullptr);
    oru_dtl_tree_set_batch_size(a, -1);
    oru_dtl_tree_set_batch_size_param(a, "$n");
    oru_dtl_tree_set_max_batches_param(a, "$n");
    const Strbuf text(oru_do_strbuf_new());
    oru_dtl_tree_to_xml(doc.get(), 0, text.get());
    EXPECT_STREQ(oru_do_strbuf_to_string(text.get()),
                 "<a op=\"noop\" type=\"(unknown)\" info=\"\"><c op=\"noop\" "
                 "type=\"cfg-data\"></c></a>");
}

}  // namespace
