#include <algorithm>

#include "sqlite_parts.h"

namespace embedded {

namespace {

void add_ranges(Sql &sql, std::span<const Range> ranges) {
    const char *between = "(";
    for (const Range &range : ranges) {
        sql.add(between).add("key >= ").mark(Cell::of_blob(range.first));
        sql.add(" AND key < ").mark(Cell::of_blob(range.end));
        between = " OR ";
    }
    sql.add(ranges.empty() ? "0" : ")");
}

/* Which rows of some ranges: everything behind FROM, without the order. The first marks are those
   of the ranges. */
void add_source(Sql &sql, SqliteDatabase &database, const Query &query,
                std::span<const Range> ranges) {
    sql.add(" FROM row WHERE ");
    add_ranges(sql, ranges);
    sql.add(" AND since <= ").mark(Cell::of_integer(query.at));
    sql.add(" AND until > ").mark(Cell::of_integer(query.at));
    if (!query.kinds.empty()) {
        // rows of several kinds would have to be sorted by key if they were looked up by kind
        const char *between = query.kinds.size() == 1 ? " AND kind IN (" : " AND +kind IN (";
        for (const std::string &kind : query.kinds) {
            sql.add(between).mark(Cell::of_integer(database.words.find(kind)));
            between = ", ";
        }
        sql.add(")");
    }
    if (query.where != nullptr) {
        sql.add(" AND ");
        add_condition(sql, database, *query.where, query.at);
    }
}

/* Reads the attributes that a query wants of the rows that it finds. They are chosen here: a list
   of names would be made into a table of the engine for every row. */
class AttributeReader {
  public:
    AttributeReader(SqliteDatabase &database, const Query &query)
        : at_(query.at),
          is_all_(query.all_names),
          statement_(
              database.connection.prepare("SELECT name, type, type_name, value FROM attribute "
                                          "WHERE row = ? AND until > ? AND since <= ?")) {
        for (const std::string &name : query.names)
            names_.push_back(database.words.find(name));
        std::sort(names_.begin(), names_.end());
        names_.erase(std::unique(names_.begin(), names_.end()), names_.end());
    }

    void read(SqliteDatabase &database, int64_t row, RowSink &sink) {
        if (!is_all_ && names_.empty())
            return;
        const ResetAtEnd reset(statement_);
        statement_.bind(row).bind(at_).bind(at_);
        while (statement_.step()) {
            if (is_all_ || std::binary_search(names_.begin(), names_.end(), statement_.integer(0)))
                sink.attribute(attribute_at(database, statement_, 0));
        }
    }

  private:
    Revision at_;
    bool is_all_;
    std::vector<int64_t> names_;
    Statement statement_;
};

/* What both scans do: each batch sees the store as it was at the scan's revision. */
class SqliteScan : public Scan {
  public:
    SqliteScan(std::shared_ptr<SqliteDatabase> database, Query query)
        : database_(std::move(database)),
          query_(std::move(query)),
          attributes_(*database_, query_) {}

    ReadStatus next(uint32_t limit, RowSink &sink) final {
        Transaction transaction(database_->connection, Transaction::Aim::read);
        if (query_.at < database_->setting("horizon"))
            return ReadStatus::expired;
        uint32_t left = limit;
        while (begin(left)) {
            const ResetAtEnd reset(rows_);
            is_cut_ = true;
            while (rows_.step()) {
                if (left == 0)
                    return ReadStatus::more;
                hand_on(sink);
                left--;
            }
            is_cut_ = false;
        }
        return ReadStatus::last;
    }

  protected:
    /* Binds `rows_` to what comes behind the last row, one row more than `limit` at most. False
       when there is nothing. */
    virtual bool begin(uint32_t limit) = 0;

    std::shared_ptr<SqliteDatabase> database_;
    Query query_;
    AttributeReader attributes_;
    Statement rows_;      /* key, label, kind, since, id */
    std::string key_;     /* of the last row */
    int64_t passed_ = 0;  /* rows */
    bool is_cut_ = false; /* the last batch ended in front of rows that `rows_` had */

  private:
    void hand_on(RowSink &sink) {
        key_ = rows_.bytes(0);
        passed_++;
        sink.row({key_, rows_.bytes(1), database_->words.text(rows_.integer(2)), rows_.integer(3)});
        attributes_.read(*database_, rows_.integer(4), sink);
    }
};

/* Rows in the order of their keys, range by range: a batch begins behind the last key. */
class KeyScan final : public SqliteScan {
  public:
    KeyScan(std::shared_ptr<SqliteDatabase> database, Query query)
        : SqliteScan(std::move(database), std::move(query)) {
        Sql sql;
        sql.add("SELECT key, label, kind, since, id");
        add_source(sql, *database_, query_, std::span(&range_, 1));
        sql.add(query_.descending ? " ORDER BY key DESC LIMIT ?" : " ORDER BY key LIMIT ?");
        marks_ = std::move(sql.marks);
        rows_ = database_->connection.prepare(sql.text);
    }

  private:
    bool begin(uint32_t limit) override {
        if (is_cut_)
            take_rest();
        else if (!take_next_range())
            return false;
        marks_[0].bytes = range_.first;
        marks_[1].bytes = range_.end;
        for (const Cell &mark : marks_)
            rows_.bind(mark);
        rows_.bind(int64_t{limit} + 1);
        return true;
    }

    bool take_next_range() {
        const size_t count = query_.ranges.size();
        if (entered_ == count)
            return false;
        range_ = query_.ranges[query_.descending ? count - 1 - entered_ : entered_];
        entered_++;
        return true;
    }

    /* Behind the last row, which may be one of an earlier range. */
    void take_rest() {
        if (query_.descending) {
            range_.end = std::min(range_.end, key_);
        } else {
            // the least key that is greater
            range_.first = std::max(range_.first, key_ + '\0');
        }
    }

    std::vector<Cell> marks_;
    Range range_;        /* what is left of the one at hand */
    size_t entered_ = 0; /* ranges */
};

/* Rows in an order of attributes: their keys are sorted once, into a table of the connection. */
class SortedScan final : public SqliteScan {
  public:
    SortedScan(std::shared_ptr<SqliteDatabase> database, Query query)
        : SqliteScan(std::move(database), std::move(query)) {
        Connection &connection = database_->connection;
        Sql sql;
        add_sorted(sql);
        Statement fill = connection.prepare(sql.text);
        for (const Cell &mark : sql.marks)
            fill.bind(mark);
        {
            Transaction transaction(connection, Transaction::Aim::read);
            fill.run();
            transaction.commit();
        }
        end_ = sqlite3_last_insert_rowid(connection.get()) + 1;
        first_ = end_ - sqlite3_changes64(connection.get());
        rows_ = connection.prepare(
            "SELECT s.key, r.label, r.kind, r.since, r.id "
            "FROM temp.sorted s JOIN row r USING (key, since) "
            "WHERE s.position >= ? AND s.position < ? "
            "ORDER BY s.position LIMIT ?");
    }

    ~SortedScan() override {
        try {
            database_->connection
                .prepare("DELETE FROM temp.sorted WHERE position >= ? AND position < ?")
                .bind(first_)
                .bind(end_)
                .run();
        } catch (const std::exception &) {
            // the table goes with the connection
        }
    }

  private:
    void add_sorted(Sql &sql) {
        Sql value;
        value.add("a.value");
        sql.add("INSERT INTO temp.sorted (key, since) SELECT key, since FROM (SELECT key, since");
        for (size_t i = 0; i < query_.order.size(); i++) {
            sql.add(", coalesce(");
            add_lookup(sql, *database_, query_.order[i].name, query_.at, value);
            sql.add("), ").mark(query_.order[i].when_missing).add(") AS s");
            sql.add(std::to_string(i));
        }
        add_source(sql, *database_, query_, query_.ranges);
        // the limit keeps the values from being looked up again for the order
        sql.add(" LIMIT -1) ORDER BY ");
        for (size_t i = 0; i < query_.order.size(); i++) {
            const SortKey &by = query_.order[i];
            const std::string column = "s" + std::to_string(i);
            const char *const direction = by.descending ? " DESC, " : ", ";
            if (by.by_length)
                sql.add("length(CAST(").add(column).add(" AS BLOB))").add(direction);
            sql.add(column).add(direction);
        }
        sql.add("key");
    }

    bool begin(uint32_t limit) override {
        if (first_ + passed_ >= end_)
            return false;
        rows_.bind(first_ + passed_).bind(end_).bind(int64_t{limit} + 1);
        return true;
    }

    int64_t first_ = 0; /* positions in the table */
    int64_t end_ = 0;
};

/* A scan that is made, used and ended under the lock on the connection, its statements too. */
class LockedScan final : public Scan {
  public:
    LockedScan(std::shared_ptr<SqliteDatabase> database, Query query)
        : database_(std::move(database)) {
        const std::lock_guard lock(database_->mutex);
        if (query.order.empty())
            scan_ = std::make_unique<KeyScan>(database_, std::move(query));
        else
            scan_ = std::make_unique<SortedScan>(database_, std::move(query));
    }

    ~LockedScan() override {
        const std::lock_guard lock(database_->mutex);
        scan_.reset();
    }

    ReadStatus next(uint32_t limit, RowSink &sink) override {
        const std::lock_guard lock(database_->mutex);
        return scan_->next(limit, sink);
    }

  private:
    std::shared_ptr<SqliteDatabase> database_;
    std::unique_ptr<Scan> scan_;
};

}  // namespace

std::unique_ptr<Scan> new_scan(std::shared_ptr<SqliteDatabase> database, Query query) {
    return std::make_unique<LockedScan>(std::move(database), std::move(query));
}

}  // namespace embedded
