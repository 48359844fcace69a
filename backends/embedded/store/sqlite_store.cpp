#include "sqlite_store.h"

#include "schema.h"
#include "sqlite_parts.h"

namespace embedded {

namespace {

Connection open_connection(const SqliteOptions &options) {
    Connection connection(options.path.empty() ? ":memory:" : options.path);
    sqlite3_busy_timeout(connection.get(), options.busy_milliseconds);
    check_owner(connection);
    connection.execute("PRAGMA journal_mode = WAL");
    connection.execute(options.durable ? "PRAGMA synchronous = FULL"
                                       : "PRAGMA synchronous = NORMAL");
    migrate(connection, schema_steps());
    // the sorted keys of open scans, on disk when they are many
    connection.execute(
        "CREATE TEMP TABLE sorted (position INTEGER PRIMARY KEY, key BLOB NOT NULL, "
        "since INTEGER NOT NULL)");
    return connection;
}

bool is_wanted(const std::vector<std::string> *names, std::string_view name) {
    if (names == nullptr)
        return true;
    for (const std::string &wanted : *names) {
        if (wanted == name)
            return true;
    }
    return false;
}

class SqliteStore final : public Store {
  public:
    explicit SqliteStore(const SqliteOptions &options)
        : database_(std::make_shared<SqliteDatabase>(options)),
          row_(database_->connection.prepare("SELECT id, kind, label, since FROM row "
                                             "WHERE key = ? AND since <= ? AND until > ?")),
          attributes_(
              database_->connection.prepare("SELECT name, type, type_name, value FROM attribute "
                                            "WHERE row = ? AND since <= ? AND until > ?")) {}

    Limits limits() const override { return database_->options.limits; }

    Revision head() override {
        const std::lock_guard lock(database_->mutex);
        return database_->head();
    }

    Revision horizon() override {
        const std::lock_guard lock(database_->mutex);
        return database_->setting("horizon");
    }

    ReadStatus read(std::string_view key, const std::vector<std::string> *names, Revision at,
                    RowSink &sink) override {
        const std::lock_guard lock(database_->mutex);
        Transaction transaction(database_->connection, Transaction::Aim::read);
        if (at < database_->setting("horizon"))
            return ReadStatus::expired;
        const ResetAtEnd reset_row(row_);
        if (!row_.bind_blob(key).bind(at).bind(at).step())
            return ReadStatus::missing;
        sink.row({key, row_.bytes(2), database_->words.text(row_.integer(1)), row_.integer(3)});
        const ResetAtEnd reset_attributes(attributes_);
        attributes_.bind(row_.integer(0)).bind(at).bind(at);
        while (attributes_.step()) {
            const Attribute attribute = attribute_at(*database_, attributes_, 0);
            if (is_wanted(names, attribute.name))
                sink.attribute(attribute);
        }
        return ReadStatus::last;
    }

    std::unique_ptr<Scan> scan(Query query) override {
        return new_scan(database_, std::move(query));
    }

    CommitResult commit(const Commit &commit, const WriteSource &writes) override {
        const std::lock_guard lock(database_->mutex);
        return write_commit(*database_, commit, writes);
    }

    Revision find_commit(std::string_view request) override {
        const std::lock_guard lock(database_->mutex);
        return find_request(*database_, request);
    }

    ReadStatus changes(Revision after, uint32_t limit, ChangeSink &sink) override {
        const std::lock_guard lock(database_->mutex);
        return read_changes(*database_, after, limit, sink);
    }

  private:
    std::shared_ptr<SqliteDatabase> database_;
    Statement row_;
    Statement attributes_;
};

}  // namespace

SqliteDatabase::SqliteDatabase(const SqliteOptions &given)
    : options(given),
      connection(open_connection(given)),
      words(connection),
      head_(connection.prepare("SELECT max(revision) FROM revision")),
      setting_(connection.prepare("SELECT value FROM setting WHERE name = ?")),
      set_setting_(connection.prepare("UPDATE setting SET value = ? WHERE name = ?")) {}

Revision SqliteDatabase::head() {
    const ResetAtEnd reset(head_);
    return head_.step() ? head_.integer(0) : 0;
}

int64_t SqliteDatabase::setting(std::string_view name) {
    const ResetAtEnd reset(setting_);
    return setting_.bind_text(name).step() ? setting_.integer(0) : 0;
}

void SqliteDatabase::set_setting(std::string_view name, int64_t value) {
    set_setting_.bind(value).bind_text(name).run();
}

Attribute attribute_at(SqliteDatabase &database, const Statement &statement, int column) {
    return {database.words.text(statement.integer(column)),
            static_cast<int32_t>(statement.integer(column + 1)),
            database.words.text(statement.integer(column + 2)), statement.cell(column + 3)};
}

std::unique_ptr<Store> open_sqlite_store(const SqliteOptions &options) {
    return std::make_unique<SqliteStore>(options);
}

}  // namespace embedded
