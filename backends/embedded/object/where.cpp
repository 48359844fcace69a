#include "where.h"

#include <cstring>
#include <set>

namespace embedded {

namespace {

using Kind = Condition::Kind;

// what a store is asked at most: the rest of a longer clause is tried on its rows
constexpr size_t kMostComparisons = 100;
constexpr int kMostDeep = 10;

/* The word of an item's name without its operator, and the operator. */
std::pair<std::string, int> split(ORUDoNvlistItem *item) {
    std::string name(view(oru_do_nvlist_item_get_name(item)));
    const int op = oru_do_where_util_extract_op(name.data());
    name.resize(std::strlen(name.c_str()));  // it was cut in front of the operator
    return {std::move(name), op};
}

ORUDoNvlist *inner(ORUDoNvlistItem *item) {
    int32_t status = 0;
    return oru_do_value_get_sequence(oru_do_nvlist_item_get_value(item), &status);
}

std::optional<Kind> kind_of(int op) {
    switch (op) {
        case ORU_WHERE_EQUAL:
            return Kind::equal;
        case ORU_WHERE_NOT_EQUAL:
            return Kind::not_equal;
        case ORU_WHERE_GREATER:
            return Kind::greater;
        case ORU_WHERE_LESS:
            return Kind::less;
        case ORU_WHERE_AT_LEAST:
            return Kind::at_least;
        case ORU_WHERE_AT_MOST:
            return Kind::at_most;
        default:
            return std::nullopt;
    }
}

/* Whole numbers compare as numbers, whatever their widths; texts are the same or not. What else
   there is compares by rules that only the library has. */
bool compares_exactly(const AttributeType &attribute, ORUDoValue *operand, Kind kind) {
    if (attribute.is_many || attribute.is_secret())
        return false;
    if (attribute.type >= ORU_DO_TYPE_UNSIGNED_BYTE && attribute.type <= ORU_DO_TYPE_LONG)
        return oru_do_value_is_integer_number(operand) != 0;
    const bool is_equality = kind == Kind::equal || kind == Kind::not_equal;
    return attribute.type == ORU_DO_TYPE_STRING && is_equality &&
           oru_do_value_is_string(operand) != 0;
}

/* A condition that could not be built whole says nothing of it, but another one that is built like
   it differs. */
WhereCondition whole_condition(ORUDoNvlist *clause) {
    const auto build = [&] {
        return made<WhereCondition>(oru_do_condition_new_from_where(clause));
    };
    const auto text_of = [](const WhereCondition &condition) {
        return std::string(view(oru_do_condition_get_expr(condition.get())));
    };
    WhereCondition condition = build();
    if (text_of(condition) != text_of(build()))
        throw std::bad_alloc();
    require_memory();
    return condition;
}

/* Whether a value fits an item, as the library has it. */
bool fits_item(ORUDoNvlistItem *item, const std::string &name, ORUDoValue *value) {
    const NameValueList clause = made<NameValueList>(oru_do_nvlist_new());
    if (oru_do_nvlist_add(clause.get(), oru_do_nvlist_item_get_name(item),
                          oru_do_nvlist_item_get_value(item)) < 0)
        throw std::bad_alloc();
    const WhereCondition condition = whole_condition(clause.get());
    const NameList names = made<NameList>(oru_do_nlist_new());
    const ValueList values = made<ValueList>(oru_do_vlist_new());
    if (oru_do_nlist_add_string(names.get(), name.c_str()) < 1 ||
        oru_do_vlist_add(values.get(), value) < 0)
        throw std::bad_alloc();
    return oru_do_condition_eval_nlist_vlist(condition.get(), names.get(), values.get()) != 0;
}

}  // namespace

Where::Where(ORUDoNvlist *clause, const ResourceType &type, bool return_defaults)
    : type_(type), return_defaults_(return_defaults) {
    if (clause == nullptr)
        return;
    condition_.kind = Kind::all;
    const bool is_exact = add_all(clause, condition_);
    has_condition_ = !condition_.parts.empty();
    if (is_exact)
        return;
    rest_ = whole_condition(clause);
    collect_names(clause);
}

bool Where::fits(ORUDoNlist *names, ORUDoVlist *values) const {
    return !rest_ || oru_do_condition_eval_nlist_vlist(rest_.get(), names, values) != 0;
}

void Where::collect_names(ORUDoNvlist *clause) {
    EachItem each(clause);
    while (ORUDoNvlistItem *item = each()) {
        const auto [name, op] = split(item);
        if (op == ORU_WHERE_AND || op == ORU_WHERE_OR)
            collect_names(inner(item));
        else
            names_.push_back(name);
    }
}

/* Adds what the store can answer; true when that is all of it. */
bool Where::add_all(ORUDoNvlist *clause, Condition &all) {
    bool is_exact = true;
    EachItem each(clause);
    while (ORUDoNvlistItem *item = each())
        is_exact = add_item(item, all) && is_exact;
    return is_exact;
}

bool Where::add_item(ORUDoNvlistItem *item, Condition &all) {
    const auto [name, op] = split(item);
    if (op == ORU_WHERE_AND || op == ORU_WHERE_OR)
        return add_inner(item, op == ORU_WHERE_AND, all);
    std::optional<Condition> part = comparison(item, name, op);
    if (!part)
        return false;
    all.parts.push_back(std::move(*part));
    return true;
}

bool Where::add_inner(ORUDoNvlistItem *item, bool is_all, Condition &to) {
    ORUDoNvlist *const clause = inner(item);
    if (clause == nullptr || depth_ == kMostDeep)
        return false;
    depth_++;
    const bool is_exact = is_all ? add_all(clause, to) : add_any(clause, to);
    depth_--;
    return is_exact;
}

/* Alternatives go to the store together or not at all. */
bool Where::add_any(ORUDoNvlist *clause, Condition &all) {
    Condition any;
    any.kind = Kind::any;
    EachItem each(clause);
    while (ORUDoNvlistItem *item = each()) {
        Condition part;
        if (!add_item(item, part))
            return false;
        any.parts.push_back(std::move(part));
    }
    all.parts.push_back(std::move(any));
    return true;
}

std::optional<Condition> Where::comparison(ORUDoNvlistItem *item, const std::string &name, int op) {
    const AttributeType *const attribute = common_attribute(type_, name);
    const std::optional<Kind> kind = kind_of(op);
    ORUDoValue *const operand = oru_do_nvlist_item_get_value(item);
    if (comparisons_ == kMostComparisons || attribute == nullptr || !kind || operand == nullptr ||
        !compares_exactly(*attribute, operand, *kind) || !attribute->default_depends_on.empty())
        return std::nullopt;
    comparisons_++;
    operands_.push_back(Value::share(operand));
    Condition condition;
    condition.kind = *kind;
    condition.name = name;
    condition.type = attribute->type;
    condition.operand = cell_of(operand, texts_);
    condition.when_missing = return_defaults_ && attribute->default_value &&
                             fits_item(item, name, attribute->default_value.get());
    return condition;
}

namespace {

/* One that depends on other attributes is the same as none. */
bool has_same_default(const AttributeType &a, const AttributeType &b) {
    if (!a.default_depends_on.empty() || !b.default_depends_on.empty())
        return false;
    if (!a.default_value || !b.default_value)
        return !a.default_value && !b.default_value;
    return oru_do_value_equals(a.default_value.get(), b.default_value.get()) != 0;
}

}  // namespace

const AttributeType *common_attribute(const ResourceType &type, std::string_view name) {
    const AttributeType *common = type.find_attribute(name);
    for (const ResourceType *implementation : type.implementations) {
        const AttributeType *const attribute = implementation->find_attribute(name);
        if (attribute == nullptr)
            continue;
        if (common == nullptr)
            common = attribute;
        const bool is_same = attribute->type == common->type &&
                             attribute->is_many == common->is_many &&
                             attribute->secrecy == common->secrecy;
        if (attribute != common && (!is_same || !has_same_default(*attribute, *common)))
            return nullptr;
    }
    return common;
}

namespace {

/* Values of these types go by their length first. */
bool is_by_length(int32_t type) {
    return oru_do_is_key_string_type(type) != 0 || type == ORU_DO_TYPE_ENUMERATION;
}

struct Direction {
    std::string name;
    bool is_descending;
};

Direction direction_of(ORUDoName *entry) {
    const std::string_view text = view(oru_do_name_get_strname(entry));
    const size_t blank = text.find(' ');
    return {std::string(text.substr(0, blank)),
            blank != std::string_view::npos && text.substr(blank + 1) == "desc"};
}

/* Whether an order is that of the keys of one collection, all in one direction. */
bool is_key_order(const std::vector<Direction> &order, const ResourceType &type) {
    if (order.size() > type.key_count)
        return false;
    for (size_t i = 0; i < order.size(); i++) {
        if (order[i].name != type.attributes[i].name ||
            order[i].is_descending != order[0].is_descending)
            return false;
    }
    // a part of the keys, falling, leaves the others rising
    return order.size() == type.key_count || !order[0].is_descending;
}

}  // namespace

bool read_order(ORUDoNlist *order, const ResourceType &type, bool return_defaults, Query &query,
                Texts &texts, std::string &fault) {
    std::vector<Direction> directions;
    EachName each(order);
    while (ORUDoName *name = each())
        directions.push_back(direction_of(name));
    if (directions.empty())
        return true;
    // nothing that comes behind an address decides
    const bool is_by_address = directions[0].name == ORU_DO_NAME_URI;
    if (is_by_address || (query.ranges.size() == 1 && is_key_order(directions, type))) {
        query.descending = directions[0].is_descending;
        return true;
    }
    std::set<std::string_view> seen;
    for (const Direction &direction : directions) {
        // a name that comes again decides nothing
        if (!seen.insert(direction.name).second)
            continue;
        const AttributeType *const attribute = common_attribute(type, direction.name);
        if (attribute == nullptr) {
            fault = direction.name;
            return false;
        }
        SortKey key{direction.name, direction.is_descending, is_by_length(attribute->type), {}};
        if (return_defaults && attribute->default_value)
            key.when_missing = cell_of(attribute->default_value.get(), texts);
        query.order.push_back(std::move(key));
    }
    return true;
}

}  // namespace embedded
