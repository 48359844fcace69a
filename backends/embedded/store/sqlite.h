/* The engine's handles, owned by scope, and its failures as `StoreFault`. */
#ifndef EMBEDDED_SQLITE_H
#define EMBEDDED_SQLITE_H

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>

#include "store.h"

namespace embedded {

struct DatabaseCloser {
    void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, DatabaseCloser>;

/* A prepared statement. Parameters and columns are counted from 0, texts and blobs that are bound
   are lent until the statement is reset. */
class Statement {
  public:
    Statement() = default;
    Statement(sqlite3 *database, std::string_view sql);

    explicit operator bool() const { return handle_ != nullptr; }

    Statement &bind(int64_t value);
    Statement &bind(double value);
    Statement &bind_text(std::string_view text);
    Statement &bind_blob(std::string_view bytes);
    Statement &bind_null();
    Statement &bind(const Cell &cell);

    /* Whether there is a row; a statement that is at its end is reset. */
    bool step();

    /* For a statement that gives no rows. */
    void run();

    void reset();

    sqlite3_stmt *get() const { return handle_.get(); }

    int64_t integer(int column) const { return sqlite3_column_int64(handle_.get(), column); }
    bool is_null(int column) const;
    std::string_view bytes(int column) const;
    Cell cell(int column) const;

  private:
    struct Finalizer {
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };

    void check(int result);

    std::unique_ptr<sqlite3_stmt, Finalizer> handle_;
    int bound_ = 0;
};

/* Resets a statement that need not be read to its end. */
class ResetAtEnd {
  public:
    explicit ResetAtEnd(Statement &statement) : statement_(statement) {}
    ~ResetAtEnd() { statement_.reset(); }
    ResetAtEnd(const ResetAtEnd &) = delete;
    ResetAtEnd &operator=(const ResetAtEnd &) = delete;

  private:
    Statement &statement_;
};

/* One connection to a database file. */
class Connection {
  public:
    /* `path` as the engine takes it; the file is made when it is missing. */
    explicit Connection(const std::string &path);

    sqlite3 *get() const { return handle_.get(); }

    void execute(const char *sql);
    Statement prepare(std::string_view sql) { return {handle_.get(), sql}; }

  private:
    friend class Transaction;

    /* Ends a transaction that is open, without what it wrote. */
    void roll_back();

    DatabaseHandle handle_;
    Statement begin_read_;
    Statement begin_write_;
    Statement commit_;
    Statement rollback_; /* made beforehand: one may have to be rolled back for want of memory */
};

/* A transaction that is rolled back unless it was committed. */
class Transaction {
  public:
    enum class Aim : uint8_t { read, write };

    Transaction(Connection &connection, Aim aim);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit();

  private:
    Connection &connection_;
    bool open_ = true;
};

}  // namespace embedded

#endif
