/* Rows of the store as rows of values, in the order in which somebody asked for them. */
#ifndef EMBEDDED_ROWS_H
#define EMBEDDED_ROWS_H

#include <unordered_map>

#include "cells.h"
#include "model.h"

namespace embedded {

/* What becomes of the secrets in a value that is read: a text in their place, or what they say. */
class SecretReader {
  public:
    virtual ~SecretReader() = default;
    virtual Value open(const Value &value) const = 0;
};

/* Names as columns: those that were asked for, and behind them what is read for other reasons. */
class Columns {
  public:
    explicit Columns(ORUDoNlist *wanted);

    /* A further name, unless it is there. */
    void add(std::string_view name);

    /* What the defaults of the columns depend on, in a type and what implements it. */
    void add_dependencies(const ResourceType &type);

    size_t wanted() const { return wanted_; }
    size_t size() const { return names_.size(); }
    const std::vector<std::string> &names() const { return names_; }

    /* The columns of a name, chained by `next`; -1 for none. */
    int first(std::string_view name) const;
    int next(int column) const { return next_[static_cast<size_t>(column)]; }

  private:
    void append(std::string_view name);

    size_t wanted_ = 0;
    std::vector<std::string> names_;
    std::vector<int> next_;
    std::unordered_map<std::string, int> by_name_;
};

/* Is told of each row when it is complete, with a value for each column; null ones are absent. */
class RowTaker {
  public:
    virtual void take(const std::vector<Value> &values) = 0;

  protected:
    ~RowTaker() = default;
};

class RowReader final : public RowSink {
  public:
    RowReader(const Model &model, const Columns &columns, const SecretReader &secrets,
              bool return_defaults, RowTaker &taker);

    void row(const Row &row) override;
    void attribute(const Attribute &attribute) override;

    /* The last row is complete, too. */
    void finish();

  private:
    void set(std::string_view name, const Value &value);
    void enter_type();
    void fill_defaults();
    Properties properties() const;

    const Model &model_;
    const Columns &columns_;
    const SecretReader &secrets_;
    bool return_defaults_;
    RowTaker &taker_;
    bool has_row_ = false;
    std::string kind_;
    const ResourceType *type_ = nullptr; /* of the row at hand; null for one that is not known */
    Value kind_value_;
    std::vector<const AttributeType *> with_default_; /* by column; null for those without one */
    bool has_conditional_ = false;                    /* a default that depends on others */
    std::vector<Value> values_;
};

}  // namespace embedded

#endif
