// The record of conditions and the tree in it.
#ifndef ORU_SRC_MD_CONDITION_H
#define ORU_SRC_MD_CONDITION_H

#include <cstring>

#include "frame/object.h"
#include "oru/condition.h"
#include "oru/util.h"

namespace oru {

// The leaves have the numbers of their keywords' tokens.
enum class NodeType : int32_t {
    group = 0,  // of a single term: no operator came to give it a meaning
    all = 1,
    any = 2,
    values = 10,
    size = 11,
    strlen = 12,
    regex = 13,
    is_null = 14,
    not_null = 15
};

struct ConditionNode {
    static constexpr int32_t kMostTokens = 16;

    NodeType type;
    char *op_str;  // the keyword of a leaf with its property, or the operator of a group
    int32_t token_count;
    char *tokens[kMostTokens];
    uint32_t negate;
    oru_regexp *regex;
    ORUDoName *prop_name;  // null where the default name counts
    ORUDoRange *range;
    ConditionNode *next;
    ConditionNode *first_child;
};

}  // namespace oru

struct ORUDoCondition {
    uint32_t ref;
    char *expr;  // null for a where clause until it is asked for
    oru::ConditionNode *root;
    ORUDoNlist *ext_prop_names;
};

template <>
struct oru::ObjectType<oru::ConditionNode> {
    static constexpr const char *name = "oru_condition_node";
    static constexpr Tag tag = Tag::cond_misc;
};

template <>
struct oru::ObjectType<ORUDoCondition> {
    static constexpr const char *name = "oru_do_condition";
    static constexpr Tag tag = Tag::cond;
    static auto &count(ORUDoCondition &self) { return self.ref; }
    static void release_members(ORUDoCondition &self);
};

namespace oru {

// A condition that is an empty group of all, without a text. Null when memory runs out.
Ref<ORUDoCondition> make_condition();

// Deletes a node, the siblings behind it, and what is below them.
void free_nodes(ConditionNode *first);

// Compiles the first token of a leaf; says so when it cannot.
void compile_regex(ConditionNode &leaf);

// How much of the name of a where item is the property: an operator may stand behind it.
inline size_t where_name_length(const char *name) {
    return std::strcspn(name, " <=>");
}

}  // namespace oru

#endif
