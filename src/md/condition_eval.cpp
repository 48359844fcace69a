// Conditions over the properties of a resource, or over lists of names and values.
#include "do/name.h"
#include "do/nlist.h"
#include "do/value.h"
#include "do/vlist.h"
#include "md/condition.h"
#include "md/range.h"
#include "oru/properties.h"
#include "oru/vlist.h"

namespace {

using oru::ConditionNode;
using oru::NodeType;

// What a value says to a leaf.
enum class Answer {
    no,
    yes,
    unknown,    // there is no such value, or nothing that it could be held against
    unreadable  // a string whose text could not be had
};

Answer answer(bool yes) {
    return yes ? Answer::yes : Answer::no;
}

Answer ask_size(ORUDoRange &range, ORUDoValue &value) {
    int32_t code = 0;
    ORUDoVlist *array = oru_do_value_get_array(&value, &code);
    if (array == nullptr)
        return Answer::unknown;
    return answer(oru_do_range_eval_long(&range, oru_do_vlist_get_len(array)) != 0);
}

template <class Matches>
Answer ask_text(ORUDoValue &value, Matches &&matches) {
    if (value.type != ORU_DO_TYPE_STRING)
        return Answer::unknown;
    const char *text = value.data.bytes;
    return text != nullptr ? answer(matches(text)) : Answer::unreadable;
}

bool has_length(ORUDoRange &range, const char *text) {
    return oru_do_range_eval_long(&range, static_cast<int64_t>(std::strlen(text))) != 0;
}

bool matches_pattern(oru_regexp &regex, const char *text) {
    return oru_regexec(&regex, text, 0, nullptr, 0) == 0;
}

Answer ask_range(const ConditionNode &leaf, ORUDoValue &value) {
    if (leaf.range == nullptr)
        return Answer::unknown;
    if (leaf.type == NodeType::size)
        return ask_size(*leaf.range, value);
    if (leaf.type == NodeType::strlen)
        return ask_text(value, [&](const char *text) { return has_length(*leaf.range, text); });
    return answer(oru::is_in_range(*leaf.range, value));
}

Answer ask(const ConditionNode &leaf, ORUDoValue *value) {
    if (value == nullptr)
        return Answer::unknown;
    switch (leaf.type) {
        case NodeType::regex:
            if (leaf.regex == nullptr)
                return Answer::unknown;
            return ask_text(*value, [&](const char *t) { return matches_pattern(*leaf.regex, t); });
        case NodeType::is_null:
            return answer(value->type == ORU_DO_TYPE_NULL);
        case NodeType::not_null:
            return answer(value->type != ORU_DO_TYPE_NULL);
        default:
            return ask_range(leaf, *value);
    }
}

// Whether a leaf holds for a value, which is null where there is none.
bool holds(const ConditionNode &leaf, ORUDoValue *value) {
    const Answer said = ask(leaf, value);
    if (said == Answer::unreadable)
        return false;  // under `not` too
    const bool absent = value == nullptr && leaf.type == NodeType::is_null;
    return (said == Answer::yes || absent) != (leaf.negate != 0);
}

struct OverProperties {
    static constexpr NodeType kNeedsAll = NodeType::all;
    ORUDoName *default_name;
    ORUDoProperties *props;

    bool leaf(const ConditionNode &leaf) const {
        if (props == nullptr)
            return leaf.negate != 0;
        ORUDoName *target = leaf.prop_name != nullptr ? leaf.prop_name : default_name;
        return holds(leaf, oru_do_properties_get_value_n(props, target));
    }
};

// The names are those of properties; that of a leaf may come from a where clause.
struct Lists {
    ORUDoNlist *names;
    ORUDoVlist *values;

    ORUDoValue *find(const ConditionNode &leaf) const {
        const char *target = oru::name_text(leaf.prop_name);
        const size_t length = oru::where_name_length(target);
        const auto *value = values->first;
        for (const auto *name = names->first; name != nullptr && value != nullptr;) {
            const char *text = oru::name_text(name->name);
            if (std::strncmp(text, target, length) == 0 && text[length] == '\0')
                return value->value;
            name = name->next;
            value = value->next;
        }
        return nullptr;
    }
};

bool is_named(const ConditionNode &leaf) {
    return leaf.prop_name != nullptr && oru::where_name_length(oru::name_text(leaf.prop_name)) > 0;
}

struct OverLists {
    static constexpr NodeType kNeedsAll = NodeType::all;
    Lists lists;

    bool leaf(const ConditionNode &leaf) const {
        return !is_named(leaf) || holds(leaf, lists.find(leaf));
    }
};

// Whether what is known makes a term false. What is not known counts against nothing.
struct ToFalse {
    static constexpr NodeType kNeedsAll = NodeType::any;
    Lists lists;

    bool leaf(const ConditionNode &leaf) const {
        const bool fails = is_named(leaf) && ask(leaf, lists.find(leaf)) == Answer::no;
        return fails != (leaf.negate != 0);
    }
};

template <class Form>
bool evaluate(const ConditionNode &node, const Form &form) {
    bool result = false;
    switch (node.type) {
        case NodeType::group:
            break;
        case NodeType::all:
        case NodeType::any:
            result = node.type == Form::kNeedsAll;
            for (auto *child = node.first_child; child != nullptr; child = child->next) {
                if (evaluate(*child, form) != result) {
                    result = !result;
                    break;
                }
            }
            break;
        default:
            return form.leaf(node);
    }
    return result != (node.negate != 0);
}

}  // namespace

int32_t oru_do_condition_eval(ORUDoCondition *condition, ORUDoName *default_name,
                              ORUDoProperties *props) {
    ORU_REQUIRE(condition);
    if (default_name == nullptr)
        return 1;
    return evaluate(*condition->root, OverProperties{default_name, props}) ? 1 : 0;
}

int32_t oru_do_condition_eval_nlist_vlist(ORUDoCondition *condition, ORUDoNlist *nlist,
                                          ORUDoVlist *vlist) {
    ORU_REQUIRE(condition);
    if (nlist == nullptr || vlist == nullptr)
        return 1;
    return evaluate(*condition->root, OverLists{{nlist, vlist}}) ? 1 : 0;
}

int32_t oru_do_condition_eval_to_false(ORUDoCondition *condition, ORUDoNlist *nlist,
                                       ORUDoVlist *vlist) {
    ORU_REQUIRE(condition);
    if (nlist == nullptr || vlist == nullptr)
        return 1;
    return evaluate(*condition->root, ToFalse{{nlist, vlist}}) ? 1 : 0;
}
