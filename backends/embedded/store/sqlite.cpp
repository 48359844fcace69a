#include "sqlite.h"

#include <system_error>

namespace embedded {

namespace {

StoreFault::Kind kind_of(int result) {
    switch (result & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return StoreFault::Kind::busy;
        case SQLITE_FULL:
        case SQLITE_TOOBIG:
            return StoreFault::Kind::full;
        case SQLITE_CORRUPT:
            return StoreFault::Kind::damaged;
        case SQLITE_NOTADB:
            return StoreFault::Kind::foreign;
        case SQLITE_CANTOPEN:
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return StoreFault::Kind::denied;
        default:
            return StoreFault::Kind::io;
    }
}

/* What the engine says, and behind it what the system said where that is the cause. */
std::string words_of(sqlite3 *database, int result) {
    if (database == nullptr)
        return sqlite3_errstr(result);
    std::string words = sqlite3_errmsg(database);
    const bool is_of_system = (result & 0xff) == SQLITE_CANTOPEN || (result & 0xff) == SQLITE_IOERR;
    const int error = is_of_system ? sqlite3_system_errno(database) : 0;
    if (error != 0)
        words += ": " + std::generic_category().message(error);
    return words;
}

/* Throws what the engine's last result means. */
[[noreturn]] void fail(sqlite3 *database, int result) {
    if ((result & 0xff) == SQLITE_NOMEM || result == SQLITE_IOERR_NOMEM)
        throw std::bad_alloc();
    throw StoreFault(kind_of(result), words_of(database, result));
}

}  // namespace

Statement::Statement(sqlite3 *database, std::string_view sql) {
    sqlite3_stmt *statement = nullptr;
    const int result = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
                                          SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (result != SQLITE_OK)
        fail(database, result);
    handle_.reset(statement);
}

void Statement::check(int result) {
    if (result == SQLITE_OK)
        return;
    reset();
    fail(sqlite3_db_handle(handle_.get()), result);
}

Statement &Statement::bind(int64_t value) {
    check(sqlite3_bind_int64(handle_.get(), ++bound_, value));
    return *this;
}

Statement &Statement::bind(double value) {
    check(sqlite3_bind_double(handle_.get(), ++bound_, value));
    return *this;
}

Statement &Statement::bind_text(std::string_view text) {
    // a null address would bind null
    check(sqlite3_bind_text64(handle_.get(), ++bound_, text.empty() ? "" : text.data(), text.size(),
                              SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Statement &Statement::bind_blob(std::string_view bytes) {
    check(sqlite3_bind_blob64(handle_.get(), ++bound_, bytes.empty() ? "" : bytes.data(),
                              bytes.size(), SQLITE_STATIC));
    return *this;
}

Statement &Statement::bind_null() {
    check(sqlite3_bind_null(handle_.get(), ++bound_));
    return *this;
}

Statement &Statement::bind(const Cell &cell) {
    switch (cell.kind) {
        case Cell::Kind::integer:
            return bind(cell.integer);
        case Cell::Kind::real:
            return bind(cell.real);
        case Cell::Kind::text:
            return bind_text(cell.bytes);
        case Cell::Kind::blob:
            return bind_blob(cell.bytes);
        case Cell::Kind::null:
            break;
    }
    return bind_null();
}

bool Statement::step() {
    const int result = sqlite3_step(handle_.get());
    if (result == SQLITE_ROW)
        return true;
    const ResetAtEnd reset_at_end(*this);
    if (result != SQLITE_DONE)
        fail(sqlite3_db_handle(handle_.get()), result);
    return false;
}

void Statement::run() {
    while (step()) {
    }
}

void Statement::reset() {
    sqlite3_reset(handle_.get());
    bound_ = 0;
}

bool Statement::is_null(int column) const {
    return sqlite3_column_type(handle_.get(), column) == SQLITE_NULL;
}

std::string_view Statement::bytes(int column) const {
    const void *const data = sqlite3_column_blob(handle_.get(), column);
    const int size = sqlite3_column_bytes(handle_.get(), column);
    // no bytes have no address either
    if (data == nullptr && sqlite3_errcode(sqlite3_db_handle(handle_.get())) == SQLITE_NOMEM)
        throw std::bad_alloc();
    return {static_cast<const char *>(data), static_cast<size_t>(size)};
}

Cell Statement::cell(int column) const {
    switch (sqlite3_column_type(handle_.get(), column)) {
        case SQLITE_INTEGER:
            return Cell::of_integer(integer(column));
        case SQLITE_FLOAT:
            return Cell::of_real(sqlite3_column_double(handle_.get(), column));
        case SQLITE_TEXT:
            return Cell::of_text(bytes(column));
        case SQLITE_BLOB:
            return Cell::of_blob(bytes(column));
        default:
            return {};
    }
}

Connection::Connection(const std::string &path) {
    sqlite3 *database = nullptr;
    const int result = sqlite3_open_v2(
        path.c_str(), &database,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE,
        nullptr);
    handle_.reset(database);
    if (result != SQLITE_OK)
        fail(database, result);
    begin_read_ = prepare("BEGIN");
    begin_write_ = prepare("BEGIN IMMEDIATE");
    commit_ = prepare("COMMIT");
    rollback_ = prepare("ROLLBACK");
}

void Connection::execute(const char *sql) {
    const int result = sqlite3_exec(get(), sql, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK)
        fail(get(), result);
}

void Connection::roll_back() {
    if (sqlite3_get_autocommit(get()) != 0)
        return;
    sqlite3_step(rollback_.get());
    sqlite3_reset(rollback_.get());
}

Transaction::Transaction(Connection &connection, Aim aim) : connection_(connection) {
    // the last one may have had no memory left to end
    connection.roll_back();
    (aim == Aim::read ? connection.begin_read_ : connection.begin_write_).run();
}

Transaction::~Transaction() {
    // the engine may have rolled back by itself, on a full disk for instance
    if (open_)
        connection_.roll_back();
}

void Transaction::commit() {
    connection_.commit_.run();
    open_ = false;
}

}  // namespace embedded
