// Conditions that filter rows by a where clause.
#include <strings.h>

#include <algorithm>

#include "do/name.h"
#include "do/nvlist.h"
#include "frame/text.h"
#include "md/condition.h"
#include "oru/hashtable.h"
#include "oru/name.h"
#include "oru/range.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

using oru::ConditionNode;
using oru::NodeType;
using oru::Text;

constexpr struct {
    const char *word;
    int32_t code;
} kOperators[] = {
    {"", ORU_WHERE_EQUAL},     {"=", ORU_WHERE_EQUAL},   {"<>", ORU_WHERE_NOT_EQUAL},
    {">", ORU_WHERE_GREATER},  {"<", ORU_WHERE_LESS},    {">=", ORU_WHERE_AT_LEAST},
    {"<=", ORU_WHERE_AT_MOST}, {"LIKE", ORU_WHERE_LIKE}, {"AND ", ORU_WHERE_AND},
    {"OR ", ORU_WHERE_OR},
};

// What a comparison asks of a value; 0, which matches nothing, for an operator that is none.
int32_t range_op(int32_t code) {
    switch (code) {
        case ORU_WHERE_EQUAL:
            return ORU_RANGE_EQUAL;
        case ORU_WHERE_NOT_EQUAL:
            return ORU_RANGE_NOT_EQUAL;
        case ORU_WHERE_GREATER:
            return ORU_RANGE_GREATER;
        case ORU_WHERE_LESS:
            return ORU_RANGE_LESS;
        case ORU_WHERE_AT_LEAST:
            return ORU_RANGE_AT_LEAST;
        case ORU_WHERE_AT_MOST:
            return ORU_RANGE_AT_MOST;
        default:
            return 0;
    }
}

// The comparisons of one group by the property that they ask about: clauses may be long. The table
// does not grow, since growth ends the process when memory runs out.
class Comparisons {
  public:
    explicit Comparisons(uint32_t items) : size_(std::clamp(items, 1U, kMostBuckets)) {}
    Comparisons(const Comparisons &) = delete;
    Comparisons &operator=(const Comparisons &) = delete;
    ~Comparisons() { oru_hashtable_close(table_, nullptr, nullptr); }

    ConditionNode *find(const char *name) const {
        void *leaf = nullptr;
        oru_hashtable_search(table_, name, &leaf);
        return static_cast<ConditionNode *>(leaf);
    }
    // False when memory runs out.
    bool add(ConditionNode &leaf) {
        if (table_ == nullptr)
            table_ = oru_hashtable_create(ORU_HASHTABLE_KEY_TEXT, size_, nullptr, nullptr);
        const char *name = oru::name_text(leaf.prop_name);
        return table_ != nullptr && oru_hashtable_insert_quick(table_, name, &leaf) == 0;
    }

  private:
    static constexpr uint32_t kMostBuckets = 1 << 16;
    uint32_t size_;
    ORUHashtable *table_ = nullptr;
};

// A group of the tree that grows by the items of its list. Each step is false when memory runs out.
class Group {
  public:
    Group(ConditionNode &node, const ORUDoNvlist &items)
        : node_(node), items_(items), end_(&node.first_child), comparisons_(items.count) {}

    bool add_items();

  private:
    bool add_item(const ORUDoNvlistItem &item);
    bool add_comparison(const char *name, int32_t code, ORUDoValue *value);
    bool add_pattern(const char *name, ORUDoValue *value);
    bool add_group(NodeType type, ORUDoValue *value);
    ConditionNode *append(NodeType type);
    ConditionNode *append_leaf(NodeType type, const char *name);
    ConditionNode *append_comparison(const char *name, ORUDoValue *value);

    ConditionNode &node_;
    const ORUDoNvlist &items_;
    ConditionNode **end_;  // where the next child goes
    Comparisons comparisons_;
};

bool Group::add_items() {
    for (const auto *item = items_.first; item != nullptr; item = item->next) {
        if (!add_item(*item))
            return false;
    }
    return true;
}

bool Group::add_item(const ORUDoNvlistItem &item) {
    const Text name(oru::duplicate(item.name));
    if (!name)
        return false;
    const int32_t code = oru_do_where_util_extract_op(name.get());
    switch (code) {
        case ORU_WHERE_LIKE:
            return add_pattern(name.get(), item.value);
        case ORU_WHERE_AND:
            return add_group(NodeType::all, item.value);
        case ORU_WHERE_OR:
            return add_group(NodeType::any, item.value);
        default:
            return add_comparison(name.get(), code, item.value);
    }
}

ConditionNode *Group::append(NodeType type) {
    auto *node = oru::make_element<ConditionNode>();
    if (node == nullptr)
        return nullptr;
    node->type = type;
    *end_ = node;
    end_ = &node->next;
    return node;
}

// There is no leaf without its name: it would be true of every row.
ConditionNode *Group::append_leaf(NodeType type, const char *name) {
    auto prop_name = oru::Ref<ORUDoName>::adopt(oru_do_name_new(name));
    ConditionNode *leaf = prop_name ? append(type) : nullptr;
    if (leaf != nullptr)
        leaf->prop_name = prop_name.release();
    return leaf;
}

// Of a range that lacks memory the leaf stays: it matches nothing.
ConditionNode *Group::append_comparison(const char *name, ORUDoValue *value) {
    ConditionNode *leaf = append_leaf(NodeType::values, name);
    if (leaf == nullptr)
        return nullptr;
    leaf->range = oru_do_range_new_t(oru_do_value_get_type(value));
    return leaf->range != nullptr ? leaf : nullptr;
}

// Where any term is enough, all that is compared with one property stands in one range. A value of
// another type than the first finds no place there.
bool Group::add_comparison(const char *name, int32_t code, ORUDoValue *value) {
    const bool shared = node_.type == NodeType::any;
    ConditionNode *leaf = shared ? comparisons_.find(name) : nullptr;
    if (leaf == nullptr) {
        leaf = append_comparison(name, value);
        if (leaf == nullptr || (shared && !comparisons_.add(*leaf)))
            return false;
    }
    return oru_do_range_add_value(leaf->range, range_op(code), value, nullptr) != ORU_RC_MALLOC;
}

// "%" stands for "*", "%%" for "%", and the last character for itself. Places are kept, so that the
// second of a pair ends the pattern.
char *pattern_of(const char *text) {
    char *pattern = oru::duplicate(text, oru::Tag::cond_misc);
    for (char *c = pattern; c != nullptr && *c != '\0'; ++c) {
        if (*c != '%' || c[1] == '\0')
            continue;
        if (c[1] == '%') {
            *++c = '\0';
        } else {
            *c = '*';
        }
    }
    return pattern;
}

// Values of other types than string make no pattern and no leaf.
bool Group::add_pattern(const char *name, ORUDoValue *value) {
    int32_t code = 0;
    const char *text = oru_do_value_get_string(value, &code);
    if (text == nullptr)
        return true;
    ConditionNode *leaf = append_leaf(NodeType::regex, name);
    if (leaf == nullptr || (leaf->tokens[0] = pattern_of(text)) == nullptr)
        return false;
    leaf->token_count = 1;
    oru::compile_regex(*leaf);
    return true;
}

bool Group::add_group(NodeType type, ORUDoValue *value) {
    ConditionNode *group = append(type);
    if (group == nullptr)
        return false;
    int32_t code = 0;
    const ORUDoNvlist *items = oru_do_value_get_sequence(value, &code);
    return items == nullptr || Group(*group, *items).add_items();
}

}  // namespace

ORUDoCondition *oru_do_condition_new_from_where(ORUDoNvlist *nvlist) {
    ORU_REQUIRE(nvlist);
    auto condition = oru::make_condition();
    if (condition)
        Group(*condition->root, *nvlist).add_items();
    return condition.release();
}

int32_t oru_do_where_util_extract_op(char *name) {
    ORU_REQUIRE(name);
    char *end = name + oru::where_name_length(name);
    const char *word = end + std::strspn(end, " ");
    int32_t code = 0;
    for (const auto &op : kOperators) {
        if (strcasecmp(op.word, word) == 0)
            code = op.code;
    }
    *end = '\0';
    return code;
}

int32_t oru_do_where_is_for_name(const char *item_name, const char *name) {
    ORU_REQUIRE(item_name);
    ORU_REQUIRE(name);
    const size_t length = oru::where_name_length(item_name);
    return std::strlen(name) == length && std::memcmp(item_name, name, length) == 0 ? 1 : 0;
}
