// Documents read against a small model of boxes, slots and ports.
#ifndef ORU_TESTS_UNIT_DTL_PARSER_SUPPORT_H
#define ORU_TESTS_UNIT_DTL_PARSER_SUPPORT_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "oru/error.h"
#include "oru/md.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "tests/unit/dtl/tree_support.h"

namespace oru::test {

using Error = std::unique_ptr<ORUDoError, Deref<oru_do_error_deref>>;

inline std::string words_of(ORUDoError *error) {
    return std::to_string(oru_do_error_get_code(error)) + " " + oru_do_error_get_msg(error);
}

inline std::string names_of(ORUDoNlist *list) {
    std::string text;
    for (int32_t i = 0; i < oru_do_nlist_get_len(list); ++i)
        text += (i == 0 ? "" : ",") +
                std::string(oru_do_name_get_strname(oru_do_nlist_get_name(list, i)));
    return text;
}

inline std::string text_of(ORUDoValue *value);

inline std::string items_of(ORUDoNvlist *list) {
    std::string text = "{";
    for (int32_t i = 0; i < oru_do_nvlist_get_len(list); ++i) {
        ORUDoNvlistItem *item = oru_do_nvlist_get_item(list, i);
        text += (i == 0 ? "" : ",") + std::string(oru_do_nvlist_item_get_name(item)) + ":" +
                text_of(oru_do_nvlist_item_get_value(item));
    }
    return text + "}";
}

// The text of a value; of a string between quotes.
inline std::string text_of(ORUDoValue *value) {
    int32_t rc = 0;
    if (oru_do_value_is_null(value) != 0)
        return "null";
    if (oru_do_value_get_type(value) == ORU_DO_TYPE_SEQUENCE)
        return items_of(oru_do_value_get_sequence(value, &rc));
    const Strbuf text(oru_do_strbuf_new());
    oru_do_value_to_strbuf(value, 0, text.get());
    const std::string shown = oru_do_strbuf_to_string(text.get());
    return oru_do_value_is_string(value) != 0 ? "'" + shown + "'" : shown;
}

// `name type op uri=... mr=... cfg=... oper=... cfg-data=... oper-data=... act=name{...}
// where={...} order=... !code words(children)`, without what a node does not have.
inline std::string describe(const ORUDtlNode *node) {
    std::string text = std::string(oru_do_name_get_strname(node->name)) + " " +
                       oru_dtl_tree_get_node_type_str(node->type) + " " +
                       oru_dtl_tree_get_op_str(node->op);
    if (const ORUDtlMrInfo *info = node->mr_info) {
        if (info->uri != nullptr)
            text += std::string(" uri=") + oru_do_uri_get_uri_str(info->uri);
        if (info->mr_meta != nullptr)
            text += std::string(" mr=") +
                    oru_do_name_get_strname(oru_do_mr_meta_get_mr_name(info->mr_meta));
        const std::pair<const char *, ORUDoNlist *> lists[] = {
            {" cfg=", info->cfg_attr_nlist},
            {" oper=", info->oper_attr_nlist},
            {" cfg-data=", info->cfg_data_nlist},
            {" oper-data=", info->oper_data_nlist}};
        for (const auto &[label, list] : lists)
            text += list != nullptr ? label + names_of(list) : "";
        if (info->act_name != nullptr) {
            text += std::string(" act=") + oru_do_name_get_strname(info->act_name) + "{";
            for (int32_t i = 0; i < oru_do_properties_get_len(info->act_in_params); ++i) {
                ORUDoProperty *prop = oru_do_properties_get_prop_at_index(info->act_in_params, i);
                text += (i == 0 ? "" : ",") + std::string(oru_do_property_get_name_string(prop)) +
                        ":" + text_of(oru_do_property_get_value(prop));
            }
            text += "}";
        }
        if (info->where_clause != nullptr)
            text += " where=" + items_of(info->where_clause);
        if (info->order_by != nullptr)
            text += " order=" + names_of(info->order_by);
    }
    if (node->error != nullptr)
        text += " !" + words_of(node->error);
    if (node->first_child == nullptr)
        return text;
    text += "(";
    for (const ORUDtlNode *child = node->first_child; child != nullptr; child = child->next)
        text += (child == node->first_child ? "" : "; ") + describe(child);
    return text + ")";
}

class DtlParser : public testing::Test {
  protected:
    static void SetUpTestSuite() {}
    DtlParser() { EXPECT_EQ(oru_md_load_dir(ORU_TEST_PACKAGES, "", ".oru2d", nullptr), 0); }
    ~DtlParser() override { oru_md_free(); }

    // Reads a document, which must give a tree.
    ORUDtlNode *parse(const std::string &text) {
        ORUDoError *raised = nullptr;
        tree.reset(oru_dtl_from_str(text.c_str(), &raised));
        error.reset(raised);
        EXPECT_NE(tree, nullptr);
        return tree ? tree->first_child : nullptr;
    }

    // What is below the root of `<r>...</r>`, or the root itself.
    std::string below(const std::string &text) {
        const std::string root = describe(parse("<r xmlns:dtl='urn:dtl'>" + text + "</r>"));
        const std::string start = "r root traverse(";
        return root.rfind(start, 0) == 0 ? root.substr(start.size(), root.size() - start.size() - 1)
                                         : root;
    }

    // An element that reads boxes, with more attributes and with content.
    static std::string boxes(const std::string &content, const std::string &op = "get",
                             const std::string &more = "") {
        return "<b uri='/sys?boxes' mr='net/Box' op='" + op + "' " + more + ">" + content + "</b>";
    }
    static std::string box(const std::string &content, const std::string &op = "get") {
        return "<b uri='/sys/boxes;id=1' mr='net/Box' op='" + op + "'>" + content + "</b>";
    }

    Tree tree;
    Error error;
};

}  // namespace oru::test

#endif
