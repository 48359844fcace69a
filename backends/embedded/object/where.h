/* Where clauses and orders of collections: what of them the store can answer exactly, and the rest,
   which is tried on each row by the library's own rules. */
#ifndef EMBEDDED_WHERE_H
#define EMBEDDED_WHERE_H

#include <optional>

#include "cells.h"
#include "model.h"

namespace embedded {

class Where {
  public:
    /* A clause, which may be null, on resources of a type. Without `return_defaults` what is not
       set fits nothing. */
    Where(ORUDoNvlist *clause, const ResourceType &type, bool return_defaults);

    /* What every row that fits has; null for nothing. */
    const Condition *condition() const { return has_condition_ ? &condition_ : nullptr; }

    /* Whether rows that have it may not fit all the same. */
    bool has_rest() const { return static_cast<bool>(rest_); }

    /* The names that the rest asks about. */
    const std::vector<std::string> &names() const { return names_; }

    /* Whether a row fits the rest. */
    bool fits(ORUDoNlist *names, ORUDoVlist *values) const;

  private:
    bool add_inner(ORUDoNvlistItem *item, bool is_all, Condition &to);
    bool add_all(ORUDoNvlist *clause, Condition &all);
    bool add_item(ORUDoNvlistItem *item, Condition &all);
    bool add_any(ORUDoNvlist *clause, Condition &all);
    std::optional<Condition> comparison(ORUDoNvlistItem *item, const std::string &name, int op);
    void collect_names(ORUDoNvlist *clause);

    const ResourceType &type_;
    bool return_defaults_;
    bool has_condition_ = false;
    Condition condition_;
    int depth_ = 0;
    size_t comparisons_ = 0;
    std::vector<Value> operands_; /* that the condition points to */
    Texts texts_;
    WhereCondition rest_;
    std::vector<std::string> names_;
};

/* The attribute of that name in a type and all that implements it, when it is the same everywhere;
   null otherwise. */
const AttributeType *common_attribute(const ResourceType &type, std::string_view name);

/* How the rows of an order come out of the store. False for an order that the store does not know,
   with the name that it cannot order by in `fault`. */
bool read_order(ORUDoNlist *order, const ResourceType &type, bool return_defaults, Query &query,
                Texts &texts, std::string &fault);

}  // namespace embedded

#endif
