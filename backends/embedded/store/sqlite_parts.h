/* What the parts of the SQLite store share: the connection, its statements, and how rows are
   read. */
#ifndef EMBEDDED_SQLITE_PARTS_H
#define EMBEDDED_SQLITE_PARTS_H

#include <limits>
#include <mutex>

#include "sqlite.h"
#include "sqlite_store.h"
#include "words.h"

namespace embedded {

/* The end of what is there now. */
constexpr Revision kForever = std::numeric_limits<int64_t>::max();

struct SqliteDatabase {
    explicit SqliteDatabase(const SqliteOptions &options);

    Revision head();
    int64_t setting(std::string_view name);
    void set_setting(std::string_view name, int64_t value);

    SqliteOptions options;
    std::mutex mutex;
    Connection connection;
    Words words;

  private:
    Statement head_;
    Statement setting_;
    Statement set_setting_;
};

/* Hands on the columns (name, type, type_name, value) of an attribute. */
Attribute attribute_at(SqliteDatabase &database, const Statement &statement, int column);

/* The statement of a condition on `row`, with what is to be bound in the order of its marks. */
struct Sql {
    std::string text;
    std::vector<Cell> marks;

    Sql &add(std::string_view more) {
        text += more;
        return *this;
    }
    Sql &mark(const Cell &cell) {
        text += '?';
        marks.push_back(cell);
        return *this;
    }
};

/* What `what` tells of the attribute `a` of `row`, as a query in a query without its end. */
void add_lookup(Sql &sql, SqliteDatabase &database, std::string_view name, Revision at,
                const Sql &what);

void add_condition(Sql &sql, SqliteDatabase &database, const Condition &condition, Revision at);

std::unique_ptr<Scan> new_scan(std::shared_ptr<SqliteDatabase> database, Query query);

/* The revision of the commit that bears the name, or 0. */
Revision find_request(SqliteDatabase &database, std::string_view request);

CommitResult write_commit(SqliteDatabase &database, const Commit &commit,
                          const WriteSource &writes);

ReadStatus read_changes(SqliteDatabase &database, Revision after, uint32_t limit, ChangeSink &sink);

}  // namespace embedded

#endif
