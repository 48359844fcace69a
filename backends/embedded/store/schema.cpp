#include "schema.h"

namespace embedded {

namespace {

// marks the file as ours, see `PRAGMA application_id`
constexpr int64_t kApplicationId = 0x4f525544;

/*
 * A row has a version for each of its lives, an attribute one for each of its values: the version
 * is there from the revision `since` up to `until`, without it. What is there now has an `until`
 * that no revision reaches. `change` tells which rows a commit touched; what it did to them is
 * found in their versions.
 */
constexpr const char *kSteps[] = {
    R"(
CREATE TABLE setting (name TEXT PRIMARY KEY, value) WITHOUT ROWID;
INSERT INTO setting VALUES ('horizon', 0), ('next_row', 1);

CREATE TABLE word (id INTEGER PRIMARY KEY, text TEXT NOT NULL UNIQUE);

CREATE TABLE revision (
    revision INTEGER PRIMARY KEY,
    time INTEGER NOT NULL,  -- microseconds since 1970
    who TEXT NOT NULL,
    request TEXT UNIQUE
);

CREATE TABLE row (
    key BLOB NOT NULL,
    since INTEGER NOT NULL,
    until INTEGER NOT NULL,
    id INTEGER NOT NULL,
    kind INTEGER NOT NULL REFERENCES word,
    label TEXT NOT NULL,
    PRIMARY KEY (key, since)
) WITHOUT ROWID;
CREATE INDEX row_by_kind ON row (kind, key);

CREATE TABLE attribute (
    row INTEGER NOT NULL,
    name INTEGER NOT NULL REFERENCES word,
    since INTEGER NOT NULL,
    until INTEGER NOT NULL,
    type INTEGER NOT NULL,
    type_name INTEGER REFERENCES word,
    value,
    PRIMARY KEY (row, until, name)  -- what is there now lies together, behind what was
) WITHOUT ROWID;

CREATE TABLE change (
    revision INTEGER NOT NULL,
    key BLOB NOT NULL,
    row INTEGER NOT NULL,
    what INTEGER NOT NULL,  -- 0 made, 1 changed, 2 erased
    PRIMARY KEY (revision, key, row)
) WITHOUT ROWID;
)",
};

int64_t ask(Connection &connection, const char *sql) {
    Statement statement = connection.prepare(sql);
    const ResetAtEnd reset(statement);
    return statement.step() ? statement.integer(0) : 0;
}

bool is_empty(Connection &connection) {
    return ask(connection, "SELECT count(*) FROM sqlite_schema") == 0;
}

}  // namespace

std::span<const char *const> schema_steps() {
    return kSteps;
}

void check_owner(Connection &connection) {
    if (!is_empty(connection) && ask(connection, "PRAGMA application_id") != kApplicationId)
        throw StoreFault(StoreFault::Kind::foreign, "the file is a database of another program");
}

void migrate(Connection &connection, std::span<const char *const> steps) {
    const auto newest = static_cast<int64_t>(steps.size());
    // who finds the newest version need not wait for a writer
    if (ask(connection, "PRAGMA application_id") == kApplicationId &&
        ask(connection, "PRAGMA user_version") == newest)
        return;

    Transaction transaction(connection, Transaction::Aim::write);
    const int64_t version = ask(connection, "PRAGMA user_version");
    check_owner(connection);
    if (version > newest)
        throw StoreFault(StoreFault::Kind::foreign,
                         "the database was written by a newer version of this program");
    for (int64_t at = is_empty(connection) ? 0 : version; at < newest; at++)
        connection.execute(steps[static_cast<size_t>(at)]);
    connection.execute(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
    connection.execute(("PRAGMA user_version = " + std::to_string(newest)).c_str());
    transaction.commit();
}

}  // namespace embedded
