#include "sqlite_parts.h"

namespace embedded {

namespace {

using Kind = Condition::Kind;

const char *operator_of(Kind kind) {
    switch (kind) {
        case Kind::equal:
            return "=";
        case Kind::not_equal:
            return "<>";
        case Kind::less:
            return "<";
        case Kind::at_most:
            return "<=";
        case Kind::greater:
            return ">";
        default:
            return ">=";
    }
}

void add_comparison(Sql &sql, SqliteDatabase &database, const Condition &condition, Revision at) {
    Sql comparison;
    const char *const sign = operator_of(condition.kind);
    if (condition.by_length) {
        const auto length = static_cast<int64_t>(condition.operand.bytes.size());
        comparison.add("(length(CAST(a.value AS BLOB)), a.value) ").add(sign).add(" (");
        comparison.mark(Cell::of_integer(length)).add(", ").mark(condition.operand).add(")");
    } else {
        comparison.add("a.value ").add(sign).add(" ").mark(condition.operand);
    }
    sql.add("coalesce(");
    add_lookup(sql, database, condition.name, at, comparison);
    sql.add(" AND a.type = ").mark(Cell::of_integer(condition.type));
    sql.add(condition.when_missing ? "), 1)" : "), 0)");
}

void add_parts(Sql &sql, SqliteDatabase &database, const Condition &condition, Revision at) {
    const bool is_all = condition.kind == Kind::all;
    if (condition.parts.empty()) {
        sql.add(is_all ? "1" : "0");
        return;
    }
    const char *between = "(";
    for (const Condition &part : condition.parts) {
        sql.add(between);
        add_condition(sql, database, part, at);
        between = is_all ? " AND " : " OR ";
    }
    sql.add(")");
}

}  // namespace

void add_lookup(Sql &sql, SqliteDatabase &database, std::string_view name, Revision at,
                const Sql &what) {
    sql.add("(SELECT ").add(what.text);
    sql.marks.insert(sql.marks.end(), what.marks.begin(), what.marks.end());
    sql.add(" FROM attribute a WHERE a.row = row.id AND a.name = ");
    sql.mark(Cell::of_integer(database.words.find(name)));
    sql.add(" AND a.since <= ").mark(Cell::of_integer(at));
    sql.add(" AND a.until > ").mark(Cell::of_integer(at));
}

void add_condition(Sql &sql, SqliteDatabase &database, const Condition &condition, Revision at) {
    if (condition.kind == Kind::all || condition.kind == Kind::any)
        add_parts(sql, database, condition, at);
    else
        add_comparison(sql, database, condition, at);
}

}  // namespace embedded
