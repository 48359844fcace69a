// The setters of a node and of what it reads.
#include <cctype>
#include <cstring>

#include "do/error.h"
#include "do/name.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "oru/dtl.h"

namespace {

using oru::Level;

template <class Field, class Value>
void set_mr_field(ORUDtlNode *dtl_node, Field ORUDtlMrInfo::*field, Value value) {
    ORU_REQUIRE(dtl_node);
    if (dtl_node->mr_info != nullptr)
        dtl_node->mr_info->*field = value;
}

// An earlier text is not freed: whoever asked for it may still read it.
void set_mr_text(ORUDtlNode *dtl_node, char *ORUDtlMrInfo::*field, const char *text) {
    ORU_REQUIRE(dtl_node);
    if (dtl_node->mr_info != nullptr && text != nullptr)
        dtl_node->mr_info->*field = oru::duplicate(text);
}

// Replaces a held name by a new one; without memory the old one stays.
void rename(ORUDoName *&held, const char *text) {
    if (ORUDoName *name = oru_do_name_new(text))
        oru::deref(std::exchange(held, name));
}

bool begins_with_number(const char *text) {
    const char *digit = text[0] == '-' ? text + 1 : text;
    return std::isdigit(static_cast<unsigned char>(*digit)) != 0;
}

}  // namespace

void oru_dtl_tree_set_type(ORUDtlNode *dtl_node, int32_t type) {
    ORU_REQUIRE(dtl_node);
    dtl_node->type = type;
}

void oru_dtl_tree_set_op(ORUDtlNode *dtl_node, int32_t op) {
    ORU_REQUIRE(dtl_node);
    dtl_node->op = op;
}

void oru_dtl_tree_set_batch_size(ORUDtlNode *dtl_node, int32_t n) {
    ORU_REQUIRE(dtl_node);
    dtl_node->batch_size = n;
}

void oru_dtl_tree_set_max_batches(ORUDtlNode *dtl_node, int32_t n) {
    ORU_REQUIRE(dtl_node);
    dtl_node->max_batches = n;
}

void oru_dtl_tree_set_prop_name(ORUDtlNode *dtl_node, const char *text) {
    if (dtl_node != nullptr && text != nullptr)
        rename(dtl_node->prop_name, text);
}

void oru_dtl_tree_set_default_expr(ORUDtlNode *dtl_node, const char *text) {
    ORU_REQUIRE(dtl_node);
    if (text == nullptr || *text == '\0')
        return;
    const size_t length = std::strlen(text);
    auto *copy = static_cast<char *>(ph_malloc_named(oru::tag_word(oru::Tag::base), length + 2));
    if (copy == nullptr)
        return;
    std::memcpy(copy, text, length + 1);
    // The reader of expressions takes a number only when something stands behind it.
    if (begins_with_number(text))
        std::memcpy(copy + length, "\n", 2);
    dtl_node->default_expr = copy;
}

void oru_dtl_tree_set_error(ORUDtlNode *dtl_node, ORUDoError *error) {
    ORU_REQUIRE(dtl_node);
    oru::replace(dtl_node->error, error);
}

void oru_dtl_tree_set_return_default(ORUDtlNode *dtl_node, uint8_t flag) {
    set_mr_field(dtl_node, &ORUDtlMrInfo::return_default, flag);
}

void oru_dtl_tree_set_return_w_child(ORUDtlNode *dtl_node, uint8_t flag) {
    set_mr_field(dtl_node, &ORUDtlMrInfo::return_w_child, flag);
}

void oru_dtl_tree_set_use_where_clause_once(ORUDtlNode *dtl_node, uint8_t flag) {
    set_mr_field(dtl_node, &ORUDtlMrInfo::use_where_clause_once, flag);
}

void oru_dtl_tree_set_continue_on_error(ORUDtlNode *dtl_node, uint8_t flag) {
    set_mr_field(dtl_node, &ORUDtlMrInfo::continue_on_error, flag);
}

void oru_dtl_tree_set_return_one(ORUDtlNode *dtl_node) {
    set_mr_field(dtl_node, &ORUDtlMrInfo::return_mode, ORU_DTL_RETURN_ONE);
}

void oru_dtl_tree_set_return_last(ORUDtlNode *dtl_node) {
    set_mr_field(dtl_node, &ORUDtlMrInfo::return_mode, ORU_DTL_RETURN_LAST);
}

void oru_dtl_tree_set_flatten(ORUDtlNode *dtl_node, const char *text) {
    ORU_REQUIRE(dtl_node);
    if (text != nullptr && std::strcmp(text, "true") == 0)
        set_mr_field(dtl_node, &ORUDtlMrInfo::flatten, uint8_t{1});
}

void oru_dtl_tree_set_batch_size_param(ORUDtlNode *dtl_node, const char *text) {
    set_mr_text(dtl_node, &ORUDtlMrInfo::batch_size_param, text);
}

void oru_dtl_tree_set_max_batches_param(ORUDtlNode *dtl_node, const char *text) {
    set_mr_text(dtl_node, &ORUDtlMrInfo::max_batches_param, text);
}

void oru_dtl_tree_set_order_param(ORUDtlNode *dtl_node, const char *text) {
    set_mr_text(dtl_node, &ORUDtlMrInfo::order_param, text);
}

void oru_dtl_tree_set_attr_select(ORUDtlNode *dtl_node, const char *text) {
    ORU_REQUIRE(dtl_node);
    if (dtl_node->mr_info != nullptr && text != nullptr)
        rename(dtl_node->mr_info->attr_select, text);
}

// The two were one operation once, which is why they say the same.
__attribute__((weak)) void oru_dtl_tree_add_cfg_attr_opt() {
    ORU_TRACE(Level::failure,
              "Invoking weak definition of ORU dtl's tree_add_oper_attr_opt function");
}

__attribute__((weak)) void oru_dtl_tree_add_oper_attr_opt() {
    ORU_TRACE(Level::failure,
              "Invoking weak definition of ORU dtl's tree_add_oper_attr_opt function");
}
