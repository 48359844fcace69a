/*
 * What the object layer of the embedded back end asks of a store, and all that it knows of one: an
 * ordered set of rows, each with its attributes, that changes by whole commits. Nothing here speaks
 * of resources, models or sessions, and nothing of how rows are kept, so that another engine can
 * take the place of the one in this folder.
 *
 * - A key is a string of bytes, and rows are ordered by it, byte by byte.
 * - Every commit makes a new revision, a number that only grows. Reads name the revision that they
 *   want to see, and see all of it and nothing newer, whatever is committed meanwhile.
 * - Old revisions are forgotten in time. Who asks for one that is gone is told `expired`.
 *
 * A store is used by one thread at a time unless its maker says otherwise. Faults of the engine (a
 * full disk, a damaged file) are thrown as `StoreFault`; everything else is a result.
 */
#ifndef EMBEDDED_STORE_H
#define EMBEDDED_STORE_H

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace embedded {

using Revision = int64_t;

/* Whatever is newest, for reads that are one by themselves. */
constexpr Revision kNewest = std::numeric_limits<Revision>::max() - 1;

/* ---- Rows ---- */

/* A value as the store compares it. Cells of one attribute and one type order as integers, as
   numbers, or byte by byte. Bytes are lent. */
struct Cell {
    enum class Kind : uint8_t { null, integer, real, text, blob };

    Kind kind = Kind::null;
    int64_t integer = 0;
    double real = 0;
    std::string_view bytes;

    static Cell of_integer(int64_t value) { return {Kind::integer, value, 0, {}}; }
    static Cell of_real(double value) { return {Kind::real, 0, value, {}}; }
    static Cell of_text(std::string_view text) { return {Kind::text, 0, 0, text}; }
    static Cell of_blob(std::string_view bytes) { return {Kind::blob, 0, 0, bytes}; }
};

/* An attribute of a row. `type` and `type_name` are the object layer's: the store keeps them. */
struct Attribute {
    std::string_view name;
    int32_t type = 0;
    std::string_view type_name;
    Cell cell;
};

/* What stands at a key. `label` is how people write the key, `kind` what rows are told apart by. */
struct Row {
    std::string_view key;
    std::string_view label;
    std::string_view kind;
    Revision since = 0; /* that made it, not that of its last change */
};

/* Is handed rows one after the other, each followed by its attributes, in no order that is told.
   What is lent is lent for the call, which must not ask the store for anything. */
class RowSink {
  public:
    virtual void row(const Row &row) = 0;
    virtual void attribute(const Attribute &attribute) = 0;

  protected:
    ~RowSink() = default;
};

/* ---- Reading ---- */

/* The keys from `first` up to `end`, without it. */
struct Range {
    std::string first;
    std::string end;
};

/* A condition on the attributes of a row, in the order of evaluation: a comparison, or all or any
   of others. One on an attribute that the row has not, or has with another type, is `when_missing`.
 */
struct Condition {
    enum class Kind : uint8_t { equal, not_equal, less, at_most, greater, at_least, all, any };

    Kind kind = Kind::all;
    std::string name;
    int32_t type = 0;
    Cell operand;
    bool by_length = false; /* shorter texts are less than longer ones */
    bool when_missing = false;
    std::vector<Condition> parts; /* of all and any */
};

struct SortKey {
    std::string name;
    bool descending = false;
    bool by_length = false;
    Cell when_missing; /* what a row without the attribute counts as; a null cell comes first */
};

struct Query {
    std::vector<Range> ranges;      /* apart from each other, in the order of their keys */
    std::vector<std::string> kinds; /* none: all */
    const Condition *where = nullptr;
    std::vector<SortKey> order;     /* then by key; rows without the attribute come first */
    bool descending = false;        /* by key, where there is no order */
    std::vector<std::string> names; /* the attributes that are wanted */
    bool all_names = false;
    Revision at = 0;
};

enum class ReadStatus : uint8_t {
    last,    /* these were the last rows, or: found */
    more,    /* more rows follow */
    missing, /* a single row that is not there */
    expired, /* the revision is gone */
};

/* A read in batches. What it holds does not grow with the rows that it passes. */
class Scan {
  public:
    virtual ~Scan() = default;

    /* Up to `limit` rows, 1 and more. Not called again after any other answer than `more`. */
    virtual ReadStatus next(uint32_t limit, RowSink &sink) = 0;
};

/* ---- Changing ---- */

/* One change to the row of a key. A commit holds at most one `set` or `erase` for a key, or an
   `erase` and then a `create`. */
struct Write {
    enum class Kind : uint8_t { create, set, erase };

    Kind kind = Kind::set;
    std::string key;
    std::string label;                 /* of a row that is made */
    std::string row_kind;              /* likewise */
    std::vector<Attribute> attributes; /* one with a null cell goes */
    bool is_lenient = false; /* a create takes the place of what is there, an erase of nothing does
                                nothing */
};

/* Takes the writes of a commit, one after the other. A write and what it points to are lent for the
   call. */
class WriteSink {
  public:
    virtual void write(const Write &write) = 0;

  protected:
    ~WriteSink() = default;
};

/* Makes the writes of a commit as they are written, so that nobody has to hold all of them. It must
   not ask the store for anything meanwhile. */
class WriteSource {
  public:
    virtual void hand_to(WriteSink &sink) const = 0;

  protected:
    ~WriteSource() = default;
};

/* Writes that are there already. */
class WriteList final : public WriteSource {
  public:
    WriteList(std::initializer_list<Write> writes) : writes_(writes) {}
    explicit WriteList(std::vector<Write> writes) : writes_(std::move(writes)) {}

    void hand_to(WriteSink &sink) const override {
        for (const Write &write : writes_)
            sink.write(write);
    }

  private:
    std::vector<Write> writes_;
};

/* What a commit is but its writes. */
struct Commit {
    std::string who;
    /* Names the commit for as long as it is kept: a second one of that name changes nothing and is
       answered as the first. Empty: no name. */
    std::string request;
    /* The commit holds only if nothing in these ranges and at these keys, which are lent, changed
       behind this revision. */
    Revision base = 0;
    std::vector<Range> unchanged;
    std::vector<std::string_view> unchanged_keys;
};

struct CommitResult {
    enum class Status : uint8_t {
        done,     /* `revision` is the new one, or that of the earlier commit of that name */
        conflict, /* a range changed, or what is made is there, or what is changed is not */
        unknown,  /* the engine failed on the way: ask again under the same name */
    };

    Status status = Status::done;
    Revision revision = 0;
};

/* ---- What changed ---- */

struct CommitView {
    Revision revision = 0;
    int64_t time = 0; /* microseconds since 1970 */
    std::string_view who;
    std::string_view request;
};

/* Is handed whole commits: each, its rows with what happened to them, and the attributes before and
   after; a cell is null for one that was not there. */
class ChangeSink {
  public:
    virtual void commit(const CommitView &commit) = 0;
    virtual void row(const Row &row, Write::Kind what) = 0;
    virtual void attribute(const Attribute &before, const Attribute &after) = 0;

  protected:
    ~ChangeSink() = default;
};

/* ---- The store ---- */

/* A commit beyond them is refused by a fault, and nothing is written. */
struct Limits {
    size_t key_bytes = 0;
    size_t value_bytes = 0; /* of one attribute */
    size_t commit_writes = 0;
};

class StoreFault : public std::runtime_error {
  public:
    enum class Kind : uint8_t { busy, full, damaged, denied, foreign, io, beyond_limits };

    StoreFault(Kind which, const std::string &words) : std::runtime_error(words), kind(which) {}

    Kind kind;
};

class Store {
  public:
    virtual ~Store() = default;

    virtual Limits limits() const = 0;

    /* The newest revision, 0 for an empty store, and the oldest that can be read. */
    virtual Revision head() = 0;
    virtual Revision horizon() = 0;

    /* The row of one key: `last`, `missing` or `expired`. Null `names`: all attributes. */
    virtual ReadStatus read(std::string_view key, const std::vector<std::string> *names,
                            Revision at, RowSink &sink) = 0;

    /* What the query points to is lent until the scan ends, which is before the store does. */
    virtual std::unique_ptr<Scan> scan(Query query) = 0;

    virtual CommitResult commit(const Commit &commit, const WriteSource &writes) = 0;

    /* The revision of the commit of that name, 0 when none is kept. */
    virtual Revision find_commit(std::string_view request) = 0;

    /* Up to `limit` commits behind the revision `after`: `last`, `more` or `expired`. */
    virtual ReadStatus changes(Revision after, uint32_t limit, ChangeSink &sink) = 0;
};

}  // namespace embedded

#endif
