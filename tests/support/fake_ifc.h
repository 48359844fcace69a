// A back end of a few resources and collections that writes down every call of its interface
// tables, and result trees as short texts.
#ifndef ORU_TESTS_SUPPORT_FAKE_IFC_H
#define ORU_TESTS_SUPPORT_FAKE_IFC_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "oru/dtl.h"
#include "oru/error.h"
#include "tests/support/owned.h"

namespace oru::test {

// Nothing is a null value; a `UriText` becomes a value of type mrURI, a list an array of them.
struct UriText {
    std::string text;
};
using FakeValue = std::variant<std::monostate, int64_t, std::string, UriText, std::vector<UriText>>;

using Attributes = std::map<std::string, FakeValue>;

struct FakeRow {
    std::string uri;
    Attributes attributes{};
};

Value make_value(const FakeValue &value);

// The text form of a value.
std::string show(const FakeValue &value);

class FakeSystem {
  public:
    FakeSystem();
    FakeSystem(const FakeSystem &) = delete;
    FakeSystem &operator=(const FakeSystem &) = delete;

    ORUDataIfc *data() { return &data_.table; }
    ORUCollIfc *coll() { return &coll_.table; }

    // What is read of single resources, by address.
    std::map<std::string, Attributes> config;
    std::map<std::string, Attributes> oper;
    // The rows of collections, by the address that a cursor is opened with.
    std::map<std::string, std::vector<FakeRow>> rows;
    // What actions answer.
    Attributes answer;
    std::string context_uri;

    // Calls that fail, by their first words ("cfg /a", "open /a?b", "next"), with their code; the
    // holder then has an error of that code and the words "failed", unless `silent`.
    std::map<std::string, int32_t> failures;
    bool silent = false;
    // Reads of that many values only.
    size_t most_values = SIZE_MAX;
    // Whether a cursor tells its end only by an empty batch.
    bool late_end = false;
    // Rows that a cursor gives when the number is left to it; 0 for all.
    uint32_t batch = 0;
    // Rows whose first value is no address.
    bool without_uri = false;
    // Run before an address is read, which may give it rows, attributes and failures.
    std::function<void(const std::string &uri)> provide{};
    // Run before each call is answered.
    void (*before_call)(FakeSystem &) = nullptr;

    // The calls since the last look.
    std::vector<std::string> take_calls();
    int32_t open_cursors() const { return open_cursors_; }

  private:
    struct Data {
        ORUDataIfc table{};
        FakeSystem *system;
    };
    struct Coll {
        ORUCollIfc table{};
        FakeSystem *system;
    };
    struct Holder {
        ORUErrorIfc table{};
        FakeSystem *system;
    };
    struct Cursor;

    void note(const std::string &call);
    int32_t outcome(const std::string &call);
    int32_t fill(const std::map<std::string, Attributes> &from, ORUDoUri *uri, ORUDoNlist *names,
                 ORUDoVlist *values);
    int32_t open(const std::string &kind, ORUDoUri *uri, ORUDoNlist *names, ORUDoNvlist *where,
                 ORUDoNlist *order, ORUDtlCursor **out_cursor);
    int32_t next(Cursor &cursor, uint32_t count, ORUDoVtable *table);
    ORUErrorIfc *holder();

    static FakeSystem &of(ORUDataIfc *ifc);
    static FakeSystem &of(ORUCollIfc *ifc);

    Data data_;
    Coll coll_;
    Holder holder_;
    std::unique_ptr<ORUDoError, Deref<oru_do_error_deref>> error_;
    Uri context_;
    std::vector<std::string> calls_;
    int32_t open_cursors_ = 0;
};

// A result tree: `name(uri)[attribute=value,...]!code words{children}`, with `~` in front of hidden
// nodes, and without what a node does not have. The attributes `_uri` and `_mr` are left out.
std::string show(ORUDoDtree *node);

// The children alone.
std::string show_children(ORUDoDtree *node);

}  // namespace oru::test

#endif
