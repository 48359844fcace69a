/* Rows of a store as texts that tests can compare. */
#ifndef TESTS_EMBEDDED_ROWS_H
#define TESTS_EMBEDDED_ROWS_H

#include <string>
#include <vector>

#include "store/sqlite_store.h"

namespace embedded {

inline std::string text_of(const Cell &cell) {
    switch (cell.kind) {
        case Cell::Kind::integer:
            return std::to_string(cell.integer);
        case Cell::Kind::real:
            return std::to_string(cell.real);
        case Cell::Kind::text:
            return '"' + std::string(cell.bytes) + '"';
        case Cell::Kind::blob:
            return '<' + std::string(cell.bytes) + '>';
        default:
            return "-";
    }
}

/* "key:kind{name/type/type name=value,...}" each. */
class Rows final : public RowSink {
  public:
    void row(const Row &row) override {
        texts.push_back(std::string(row.key) + ":" + std::string(row.kind) + "{}");
    }
    void attribute(const Attribute &attribute) override {
        std::string &text = texts.back();
        text.pop_back();
        if (text.back() != '{')
            text += ',';
        text += std::string(attribute.name) + "/" + std::to_string(attribute.type);
        if (!attribute.type_name.empty())
            text += "/" + std::string(attribute.type_name);
        text += "=" + text_of(attribute.cell) + "}";
    }

    std::vector<std::string> texts;
};

inline Attribute number(std::string_view name, int64_t value) {
    return {name, 5, {}, Cell::of_integer(value)};
}
inline Attribute text(std::string_view name, std::string_view value) {
    return {name, 8, {}, Cell::of_text(value)};
}
inline Attribute gone(std::string_view name) {
    return {name, 0, {}, {}};
}

inline Write create(std::string key, std::vector<Attribute> attributes = {},
                    std::string kind = "K") {
    return {Write::Kind::create, key, "/" + key, std::move(kind), std::move(attributes)};
}
inline Write set(std::string key, std::vector<Attribute> attributes) {
    return {Write::Kind::set, std::move(key), {}, {}, std::move(attributes)};
}
inline Write erase(std::string key) {
    return {Write::Kind::erase, std::move(key), {}, {}, {}};
}

inline CommitResult commit(Store &store, std::vector<Write> writes) {
    Commit change;
    change.who = "test";
    return store.commit(change, WriteList(std::move(writes)));
}

inline const Range kEverything = {"", "\xff"};

/* All rows of a query, read in batches of that many. */
inline std::vector<std::string> read_all(Store &store, Query query, uint32_t batch = 100) {
    Rows rows;
    const std::unique_ptr<Scan> scan = store.scan(std::move(query));
    while (scan->next(batch, rows) == ReadStatus::more) {
    }
    return rows.texts;
}

inline Query everything(Revision at) {
    Query query;
    query.ranges = {kEverything};
    query.all_names = true;
    query.at = at;
    return query;
}

inline std::vector<std::string> everything_in(Store &store) {
    return read_all(store, everything(store.head()));
}

inline std::string read_one(Store &store, std::string_view key, Revision at) {
    Rows rows;
    switch (store.read(key, nullptr, at, rows)) {
        case ReadStatus::missing:
            return "missing";
        case ReadStatus::expired:
            return "expired";
        default:
            return rows.texts.at(0);
    }
}

}  // namespace embedded

#endif
