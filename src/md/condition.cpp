#include "md/condition.h"

#include <atomic>

#include "do/strbuf.h"
#include "frame/text.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/range.h"

namespace {

using oru::ConditionNode;
using oru::Level;
using oru::NodeType;
using oru::Ref;
using oru::Text;

void free_node(ConditionNode *node) {
    oru::free_nodes(node->first_child);
    const Text op_str(node->op_str);
    for (int32_t i = 0; i < node->token_count; ++i)
        ph_free_named(node->tokens[i]);
    if (node->regex != nullptr) {
        oru_regfree(node->regex);
        ph_free_named(node->regex);
    }
    oru_do_name_deref(node->prop_name);
    oru_do_range_deref(node->range);
    oru::free_element(node);
}

const char *keyword_of(NodeType type) {
    return type == NodeType::values ? "values" : type == NodeType::size ? "size" : "strlen";
}

void put(ORUDoStrbuf &buf, std::initializer_list<const char *> texts) {
    for (const char *text : texts)
        oru_do_strbuf_add_string(&buf, text);
}

// False when a text could not be had.
bool put_range(ORUDoStrbuf &buf, const ConditionNode &leaf) {
    const char *range = oru_do_range_get_range_str(leaf.range);
    if (range == nullptr)
        return false;
    if (leaf.prop_name != nullptr)
        put(buf, {oru_do_name_get_strname(leaf.prop_name), "."});
    put(buf, {keyword_of(leaf.type), "(", range, ")"});
    return true;
}

bool put_terms(ORUDoStrbuf &buf, const ConditionNode &group);

bool put_term(ORUDoStrbuf &buf, const ConditionNode &node) {
    bool whole = true;
    switch (node.type) {
        case NodeType::group:
            break;
        case NodeType::all:
        case NodeType::any:
            put(buf, {"("});
            whole = put_terms(buf, node);
            put(buf, {")"});
            break;
        case NodeType::values:
        case NodeType::size:
        case NodeType::strlen:
            whole = node.range == nullptr || put_range(buf, node);
            break;
        case NodeType::regex:
            if (node.token_count > 0)
                put(buf, {"regex(", node.tokens[0], ")"});
            break;
        case NodeType::is_null:
            put(buf, {"is_null()"});
            break;
        case NodeType::not_null:
            put(buf, {"not_null()"});
            break;
    }
    return whole;
}

// Neither `not` nor the property of a pattern is told.
bool put_terms(ORUDoStrbuf &buf, const ConditionNode &group) {
    for (const auto *child = group.first_child; child != nullptr; child = child->next) {
        if (child != group.first_child)
            put(buf, {group.type == NodeType::any ? " or " : " and "});
        if (!put_term(buf, *child))
            return false;
    }
    return true;
}

char *text_of_tree(const ConditionNode &root) {
    const auto buf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf || !put_terms(*buf, root) || oru_do_strbuf_get_err(buf.get()) != 0)
        return nullptr;
    return oru::duplicate(oru_do_strbuf_to_string(buf.get()));
}

}  // namespace

void oru::free_nodes(ConditionNode *first) {
    while (first != nullptr)
        free_node(std::exchange(first, first->next));
}

void oru::compile_regex(ConditionNode &leaf) {
    // The result does not tell of a holder that could not be had.
    oru_regcomp(&leaf.regex, leaf.tokens[0], REG_EXTENDED);
    if (leaf.regex == nullptr)
        ORU_TRACE(Level::failure, "Failed to compile regex\n");
}

oru::Ref<ORUDoCondition> oru::make_condition() {
    auto condition = make_ref<ORUDoCondition>();
    if (!condition)
        return condition;
    condition->ext_prop_names = oru_do_nlist_new();
    condition->root = make_element<ConditionNode>();
    if (condition->ext_prop_names == nullptr || condition->root == nullptr)
        return {};
    condition->root->type = NodeType::all;
    return condition;
}

void oru::ObjectType<ORUDoCondition>::release_members(ORUDoCondition &self) {
    free_nodes(self.root);
    replace_text(self.expr, nullptr);
    oru_do_nlist_deref(self.ext_prop_names);
}

const char *oru_do_condition_get_expr(ORUDoCondition *condition) {
    ORU_REQUIRE(condition);
    std::atomic_ref cache(condition->expr);
    char *known = cache.load(std::memory_order_acquire);
    if (known != nullptr)
        return known;
    Text made(text_of_tree(*condition->root));
    if (!made || cache.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel))
        return made.release();
    return known;
}

ORUDoNlist *oru_do_condition_get_ext_prop_names(ORUDoCondition *condition) {
    ORU_REQUIRE(condition);
    return condition->ext_prop_names;
}

ORU_OBJECT_API(ORUDoCondition, oru_do_condition)
