// Conditions from any text, from where clauses in JSON, and from where clauses that are drawn:
// read, written as text again, and evaluated over drawn properties in all forms. The first letter
// says which: 'w' draws a where clause, 'j' reads one, anything else is a text, up to a zero byte.
// What stands behind it draws the properties.
#include <fuzzer/FuzzedDataProvider.h>
#include <oru/condition.h>
#include <oru/error.h>
#include <oru/json.h>
#include <oru/name.h>
#include <oru/nlist.h>
#include <oru/nvlist.h>
#include <oru/properties.h>
#include <oru/value.h>
#include <oru/vlist.h>
#include <oruplatform/poolheap.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <utility>

#define CHECK(condition)                                                         \
    do {                                                                         \
        if (!(condition)) {                                                      \
            std::fprintf(stderr, "%s:%d: " #condition "\n", __FILE__, __LINE__); \
            std::abort();                                                        \
        }                                                                        \
    } while (false)

namespace {

struct Release {
    void operator()(ORUDoCondition *object) const { oru_do_condition_deref(object); }
    void operator()(ORUDoError *object) const { oru_do_error_deref(object); }
    void operator()(ORUDoName *object) const { oru_do_name_deref(object); }
    void operator()(ORUDoNlist *object) const { oru_do_nlist_deref(object); }
    void operator()(ORUDoNvlist *object) const { oru_do_nvlist_deref(object); }
    void operator()(ORUDoProperties *object) const { oru_do_properties_deref(object); }
    void operator()(ORUDoValue *object) const { oru_do_value_deref(object); }
    void operator()(ORUDoVlist *object) const { oru_do_vlist_deref(object); }
};

using Condition = std::unique_ptr<ORUDoCondition, Release>;
using Error = std::unique_ptr<ORUDoError, Release>;
using Name = std::unique_ptr<ORUDoName, Release>;
using Names = std::unique_ptr<ORUDoNlist, Release>;
using Where = std::unique_ptr<ORUDoNvlist, Release>;
using Properties = std::unique_ptr<ORUDoProperties, Release>;
using Value = std::unique_ptr<ORUDoValue, Release>;
using Values = std::unique_ptr<ORUDoVlist, Release>;

constexpr const char *kColumns[] = {"a", "b", "c", "d.e"};

// ---- The tree, as it stands in memory ----

struct Node {
    int32_t type;
    char *op_str;
    int32_t token_count;
    char *tokens[16];
    uint32_t negate;
    void *regex;
    ORUDoName *prop_name;
    void *range;
    Node *next;
    Node *first_child;
};

struct Record {
    uint32_t ref;
    char *expr;
    Node *root;
    ORUDoNlist *ext_prop_names;
};

Record &record(const Condition &condition) {
    return *reinterpret_cast<Record *>(condition.get());
}

struct Tree {
    bool has_not = false;
    bool is_named = true;  // each leaf by a name without an operator in it
    int nodes = 0;
    int deepest = 0;

    void visit(const Node &node, int depth) {
        CHECK((node.type >= 0 && node.type <= 2) || (node.type >= 10 && node.type <= 15));
        CHECK(node.token_count >= 0 && node.token_count <= 16);
        CHECK(node.type >= 10 || (node.token_count == 0 && node.prop_name == nullptr));
        CHECK(node.type < 10 || node.first_child == nullptr);
        ++nodes;
        deepest = std::max(deepest, depth);
        has_not = has_not || node.negate != 0;
        if (node.type >= 10) {
            const char *name =
                node.prop_name != nullptr ? oru_do_name_get_strname(node.prop_name) : "";
            is_named = is_named && *name != '\0' && std::strpbrk(name, " <=>") == nullptr;
        }
        for (const Node *child = node.first_child; child != nullptr; child = child->next)
            visit(*child, depth + 1);
    }
};

// ---- What conditions are evaluated over ----

struct Row {
    Properties props{oru_do_properties_new()};
    Names names{oru_do_nlist_new()};
    Values values{oru_do_vlist_new()};
};

Value draw_value(FuzzedDataProvider &data) {
    switch (data.ConsumeIntegralInRange(0, 8)) {
        case 0:
            return Value(oru_do_value_new_long(data.ConsumeIntegralInRange<int64_t>(-3, 12)));
        case 1:
            return Value(oru_do_value_new_unsigned_byte(data.ConsumeIntegral<uint8_t>()));
        case 2:
            return Value(oru_do_value_new_string(data.ConsumeRandomLengthString(8).c_str()));
        case 3:
            return Value(oru_do_value_new_double(data.ConsumeIntegral<int8_t>() / 4.0));
        case 4:
            return Value(oru_do_value_new_boolean(data.ConsumeBool()));
        case 5: {
            const Values elements(oru_do_vlist_new());
            for (int left = data.ConsumeIntegralInRange(0, 3); left > 0; --left)
                oru_do_vlist_add_long(elements.get(), left);
            return Value(oru_do_value_new_array(elements.get()));
        }
        case 6:
            return Value(oru_do_value_new_ip_address("\x04\x0a\x00\x00\x01", 5));
        case 7:
            return Value(oru_do_value_new_sequence(Where(oru_do_nvlist_new()).get()));
        default:
            return Value(oru_do_value_new_null());
    }
}

// Each column is there, or not; twice perhaps, where the first counts.
void draw_row(FuzzedDataProvider &data, Row &row) {
    for (const char *column : kColumns) {
        if (data.ConsumeBool())
            continue;
        const Value value = draw_value(data);
        oru_do_properties_set_value(row.props.get(), column, value.get());
        oru_do_nlist_add_string(row.names.get(), column);
        oru_do_vlist_add(row.values.get(), value.get());
    }
    oru_do_nlist_add_string(row.names.get(), kColumns[0]);
}

bool holds(const Condition &condition, const Row &row) {
    const int32_t result =
        oru_do_condition_eval_nlist_vlist(condition.get(), row.names.get(), row.values.get());
    CHECK(result == 0 || result == 1);
    return result == 1;
}

void evaluate(const Condition &condition, const Row &row, const Tree &tree) {
    const Name name(oru_do_name_new(kColumns[1]));
    const int32_t over_props = oru_do_condition_eval(condition.get(), name.get(), row.props.get());
    CHECK(over_props == 0 || over_props == 1);
    CHECK(oru_do_condition_eval(condition.get(), nullptr, row.props.get()) == 1);
    oru_do_condition_eval(condition.get(), name.get(), nullptr);
    const bool over_lists = holds(condition, row);
    CHECK(!tree.is_named || over_lists == (over_props == 1));
    const int32_t made_false =
        oru_do_condition_eval_to_false(condition.get(), row.names.get(), row.values.get());
    CHECK(made_false == 0 || made_false == 1);
    CHECK(tree.has_not || made_false == 0 || !over_lists);
}

// ---- Texts ----

void check_names(ORUDoNlist *names) {
    std::set<std::string> seen;
    for (int32_t i = 0; i < oru_do_nlist_get_len(names); ++i)
        CHECK(seen.insert(oru_do_name_get_strname(oru_do_nlist_get_name(names, i))).second);
    CHECK(seen.size() <= 100);
}

void try_text(const std::string &text, FuzzedDataProvider &data) {
    const Condition condition(oru_do_condition_new(text.c_str()));
    CHECK(condition != nullptr);
    CHECK(text == oru_do_condition_get_expr(condition.get()));
    check_names(oru_do_condition_get_ext_prop_names(condition.get()));
    Tree tree;
    tree.visit(*record(condition).root, 0);
    CHECK(tree.nodes <= 101 && tree.deepest <= 5);
    for (int rows = 0; rows < 2; ++rows) {
        Row row;
        draw_row(data, row);
        evaluate(condition, row, tree);
    }
}

// ---- Where clauses ----

// A clause whose text says all that there is in it: bounds that are read as they are written, in
// groups of two terms at least, none of them deeper than texts go.
class Drawn {
  public:
    explicit Drawn(FuzzedDataProvider &data) : data_(data) {}
    Where list(int depth) {
        Where items(oru_do_nvlist_new());
        int left = data_.ConsumeIntegralInRange(2, 4);
        for (size_t column = 0; left > 0; --left, ++column) {
            const bool nested = depth < 3 && data_.ConsumeIntegralInRange(0, 3) == 0;
            nested ? add_group(items, depth) : add_item(items, kColumns[column]);
        }
        return items;
    }
    bool has_patterns() const { return has_patterns_; }

  private:
    void add_group(const Where &items, int depth) {
        const bool any = data_.ConsumeBool();
        const Value value(oru_do_value_new_sequence(list(depth + 1).get()));
        oru_do_nvlist_add(items.get(), any ? " OR " : " AND ", value.get());
    }
    void add_item(const Where &items, const std::string &name) {
        constexpr const char *kOperators[] = {"", " =", " >=", ">="};
        if (data_.ConsumeIntegralInRange(0, 7) == 0) {
            has_patterns_ = true;
            const Value pattern(oru_do_value_new_string(draw_word("x%y").c_str()));
            oru_do_nvlist_add(items.get(), (name + " LIKE").c_str(), pattern.get());
            return;
        }
        for (int left = data_.ConsumeIntegralInRange(1, 2); left > 0; --left) {
            const Value value(oru_do_value_new_long(data_.ConsumeIntegralInRange(0, 12)));
            const char *op = data_.PickValueInArray(kOperators);
            oru_do_nvlist_add(items.get(), (name + op).c_str(), value.get());
        }
    }
    std::string draw_word(const char *letters) {
        std::string word = "w";
        for (int left = data_.ConsumeIntegralInRange(0, 5); left > 0; --left)
            word += letters[data_.ConsumeIntegralInRange<size_t>(0, std::strlen(letters) - 1)];
        return word;
    }

    FuzzedDataProvider &data_;
    bool has_patterns_ = false;
};

std::string text_of(const Condition &condition) {
    const char *text = oru_do_condition_get_expr(condition.get());
    CHECK(text != nullptr && text == oru_do_condition_get_expr(condition.get()));
    return text;
}

// The text of the tree, whatever it was read from.
std::string text_of_tree(const Condition &condition) {
    ph_free_named(std::exchange(record(condition).expr, nullptr));
    return text_of(condition);
}

void try_drawn(FuzzedDataProvider &data) {
    Drawn drawn(data);
    const Where where = drawn.list(0);
    const Condition condition(oru_do_condition_new_from_where(where.get()));
    CHECK(condition != nullptr);
    const std::string text = text_of(condition);
    Tree tree;
    tree.visit(*record(condition).root, 0);
    if (tree.nodes > 12)
        return;  // more tokens than a text may have
    const Condition again(oru_do_condition_new(text.c_str()));
    CHECK(text_of_tree(again) == text);
    for (int rows = 0; rows < 3; ++rows) {
        Row row;
        draw_row(data, row);
        evaluate(condition, row, tree);
        CHECK(drawn.has_patterns() || holds(again, row) == holds(condition, row));
    }
}

void try_json(const std::string &text, FuzzedDataProvider &data) {
    ORUDoError *error = nullptr;
    const Where where(
        oru_do_nvlist_from_json(text.c_str(), static_cast<int32_t>(text.size()), &error));
    const Error owned(error);
    if (!where)
        return;
    const Condition condition(oru_do_condition_new_from_where(where.get()));
    CHECK(condition != nullptr);
    Row row;
    draw_row(data, row);
    Tree tree;
    tree.visit(*record(condition).root, 0);
    evaluate(condition, row, tree);
    const Condition again(oru_do_condition_new(text_of(condition).c_str()));
    CHECK(again != nullptr);
}

void try_input(const uint8_t *data, size_t size) {
    if (size > 0 && data[0] == 'w') {
        FuzzedDataProvider behind(data + 1, size - 1);
        try_drawn(behind);
        return;
    }
    const std::string text(reinterpret_cast<const char *>(data),
                           strnlen(reinterpret_cast<const char *>(data), size));
    const size_t read = std::min(size, text.size() + 1);
    FuzzedDataProvider behind(data + read, size - read);
    text.starts_with('j') ? try_json(text.substr(1), behind) : try_text(text, behind);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const uint64_t blocks = poolheap_live_blocks();
    try_input(data, size);
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
