#include "sqlite_parts.h"

namespace embedded {

namespace {

/* What was there before a revision and what is there behind it, name by name. */
class Differences {
  public:
    explicit Differences(SqliteDatabase &database)
        : database_(database),
          versions_(database.connection.prepare(
              "SELECT name, type, type_name, value, since FROM attribute "
              "WHERE row = ? AND (since = ? OR until = ?) ORDER BY name, since")) {}

    void read(int64_t row, Revision revision, ChangeSink &sink) {
        const ResetAtEnd reset(versions_);
        versions_.bind(row).bind(revision).bind(revision);
        // the version that ends, if there is one, comes right before the one that begins; its
        // texts are gone with the next step
        Attribute before;
        std::string bytes;
        while (versions_.step()) {
            const Attribute version = attribute_at(database_, versions_, 0);
            const bool begins = versions_.integer(4) == revision;
            if (before.cell.kind != Cell::Kind::null) {
                const bool is_replaced = begins && version.name == before.name;
                const Attribute gone = {before.name, 0, {}, {}};
                sink.attribute(before, is_replaced ? version : gone);
                before = {};
                if (is_replaced)
                    continue;
            }
            if (begins) {
                sink.attribute({version.name, 0, {}, {}}, version);
            } else {
                before = version;
                bytes = version.cell.bytes;
                before.cell.bytes = bytes;
            }
        }
        if (before.cell.kind != Cell::Kind::null)
            sink.attribute(before, {before.name, 0, {}, {}});
    }

  private:
    SqliteDatabase &database_;
    Statement versions_;
};

class ChangeReader {
  public:
    ChangeReader(SqliteDatabase &database, ChangeSink &sink)
        : database_(database), sink_(sink), differences_(database) {}

    void read(Revision revision) {
        const ResetAtEnd reset(rows_);
        rows_.bind(revision);
        while (rows_.step()) {
            sink_.row({rows_.bytes(0), rows_.bytes(2), database_.words.text(rows_.integer(3)),
                       rows_.integer(4)},
                      static_cast<Write::Kind>(rows_.integer(5)));
            differences_.read(rows_.integer(1), revision, sink_);
        }
    }

  private:
    SqliteDatabase &database_;
    ChangeSink &sink_;
    Differences differences_;
    // what was erased comes before what was made in its place
    Statement rows_ = database_.connection.prepare(
        "SELECT c.key, c.row, r.label, r.kind, r.since, c.what "
        "FROM change c JOIN row r ON r.key = c.key AND r.id = c.row "
        "WHERE c.revision = ? ORDER BY c.key, c.row");
};

}  // namespace

ReadStatus read_changes(SqliteDatabase &database, Revision after, uint32_t limit,
                        ChangeSink &sink) {
    Transaction transaction(database.connection, Transaction::Aim::read);
    if (after < database.setting("horizon"))
        return ReadStatus::expired;
    ChangeReader reader(database, sink);
    Statement commits = database.connection.prepare(
        "SELECT revision, time, who, request FROM revision WHERE revision > ? "
        "ORDER BY revision LIMIT ?");
    commits.bind(after).bind(int64_t{limit});
    for (uint32_t i = 0; i < limit; i++) {
        if (!commits.step())
            return ReadStatus::last;
        sink.commit({commits.integer(0), commits.integer(1), commits.bytes(2), commits.bytes(3)});
        reader.read(commits.integer(0));
    }
    return ReadStatus::more;
}

}  // namespace embedded
