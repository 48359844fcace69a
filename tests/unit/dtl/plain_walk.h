// A second, plain walk: the numbered steps of docs/walk.md one after the other, over records of its
// own, as slow as it likes. Calls and trees of the library are compared with it.
#ifndef ORU_TESTS_UNIT_DTL_PLAIN_WALK_H
#define ORU_TESTS_UNIT_DTL_PLAIN_WALK_H

#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/unit/dtl/plain_document.h"

namespace oru::test {

using Names = std::vector<std::string>;
using Values = std::vector<FakeValue>;

// A result node. Nodes live as long as the walk, so that an address never comes again.
struct PlainNode {
    std::string name;
    PlainNode *parent = nullptr;
    std::optional<std::string> uri{};
    std::optional<std::string> parent_of{};  // the address that its own was made from as the parent
    bool has_props = false;
    NamedValues props{};
    std::optional<std::pair<int32_t, std::string>> error{};
    bool hidden = false;
    std::vector<PlainNode *> children{};

    const FakeValue *value(const std::string &wanted) const;
    void set(const std::string &wanted, const FakeValue &to);
    // The child behind `child`, the first for null; null behind the last.
    PlainNode *next(const PlainNode *child) const;
    bool has(const PlainNode *child) const;
    void hide_behind(const PlainNode *child, bool hide);
};

// Puts the children of `child` in its place.
void flatten(PlainNode &parent, PlainNode &child);

// As `show_children` of result trees.
std::string show_children(const PlainNode &node);

class PlainWalk {
  public:
    // Of `tables` only the data is read.
    PlainWalk(const DocNode &doc, FakeSystem &tables,
              const std::map<std::string, FakeValue> &params);
    ~PlainWalk();

    int32_t next(int32_t count);
    std::string tree() const { return show_children(*root_); }
    std::vector<std::string> take_calls() { return std::exchange(calls_, {}); }
    // Gives up all that is open.
    void end();

  private:
    struct Cursor {
        Names names;
        std::vector<FakeRow> rows;
        size_t at = 0;
    };
    struct Ctx {
        int32_t state = 0;
        std::unique_ptr<Cursor> cursor{};
        int32_t batches = 0;
        const PlainNode *dtree_node = nullptr;
        const DocNode *dtl_ch = nullptr;
        PlainNode *dtree_ch = nullptr;
        size_t list_at = 0;
        std::unique_ptr<Ctx> child{};
    };
    // One fetch.
    struct Fetch {
        Ctx *ctx;
        const DocNode *ch;
        std::string uri;
        PlainNode *parent;
        int32_t count;
        PlainNode **row;
    };
    struct Address {
        std::optional<std::string> uri{};
        std::optional<std::vector<std::string>> list{};
        bool failed = false;
    };

    // plain_walk.cpp
    int32_t walk(int32_t count, Ctx &parent_ctx, const DocNode &dtl_node, PlainNode &parent);
    int32_t invoke(Ctx &ctx, const DocNode &ch, PlainNode &parent, int32_t fetch, PlainNode **row);
    PlainNode *add(PlainNode &parent, const std::string &name);
    void close(Ctx &ctx);
    void give_up(std::unique_ptr<Ctx> &ctx);
    int32_t number_of(const std::string &param) const;

    // plain_fetch.cpp
    int32_t dispatch(const Fetch &fetch);
    int32_t read_all(const Fetch &fetch, int32_t op);
    int32_t read_attrs(const Fetch &fetch);
    int32_t invoke_action(const Fetch &fetch, const std::string &uri);
    int32_t fetch_rows(const Fetch &fetch);
    int32_t fetch_batch(const Fetch &fetch, const Names &cfg, const std::optional<Names> &oper,
                        bool oper_mr);
    int32_t open(const Fetch &fetch, const Names &cfg, const std::optional<Names> &oper,
                 bool oper_mr, std::optional<NamedValues> &where);
    int32_t take_row(const Fetch &fetch, const Values &row, const Names &cfg,
                     const std::optional<Names> &oper, bool oper_mr,
                     const std::optional<NamedValues> &where);
    void mark_where_used(const DocNode &ch);
    bool takes_where(const DocNode &ch);

    // plain_values.cpp
    void fill(const Fetch &fetch, PlainNode &node, const std::string &uri, const Names &names,
              const Values &values, bool with_ids);
    std::optional<FakeValue> default_of(const DocNode &attr, const PlainNode &parent,
                                        const Names &names, const Values &values) const;
    std::optional<FakeValue> resolve(const std::string &text, const PlainNode *node) const;
    std::optional<FakeValue> resolve_row(const std::string &text, const PlainNode &parent,
                                         const Names &names, const Values &values) const;
    std::optional<Names> selection_of(const DocNode &ch, const PlainNode &parent) const;
    std::optional<Names> order_of(const DocNode &ch) const;
    NamedValues resolved(const NamedValues &where, const PlainNode &parent) const;
    Address address_of(const DocNode &ch, const PlainNode &parent) const;

    // plain_tables.cpp: the back end.
    int32_t outcome(const std::string &call);
    int32_t read(bool oper, const std::string &uri, const Names &names, bool defaults,
                 Values &values);
    int32_t read_properties(bool oper, const std::string &uri, PlainNode &into);
    int32_t cursor_next(Cursor &cursor, int32_t count, std::vector<Values> &rows);
    void take_error(PlainNode &node) const;

    const DocNode &doc_;
    FakeSystem &tables_;
    std::map<std::string, FakeValue> params_;
    std::list<PlainNode> nodes_;
    PlainNode *root_;
    Ctx top_{};
    std::vector<const DocNode *> where_used_;
    size_t where_room_ = 0;
    int32_t call_count_ = 0;
    int32_t node_added_ = 0;
    int32_t leaf_count_ = 0;
    bool retry_ = false;
    std::optional<int32_t> error_{};  // what the holder has
    std::vector<std::string> calls_;
};

bool is_variable_text(const std::string &text);

}  // namespace oru::test

#endif
