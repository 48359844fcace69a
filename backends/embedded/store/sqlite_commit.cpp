#include <algorithm>
#include <chrono>

#include "sqlite_parts.h"

namespace embedded {

namespace {

using Status = CommitResult::Status;

// how many old commits a commit forgets at most, so that none pays for many
constexpr int64_t kForgottenAtOnce = 16;

int64_t now() {
    using std::chrono::duration_cast;
    using std::chrono::microseconds;
    return duration_cast<microseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/* One commit, within its transaction. */
class Committer {
  public:
    explicit Committer(SqliteDatabase &database) : database_(database) {}

    /* The revision of the commit that bears the name, or 0. */
    Revision find_request(const std::string &request) {
        Statement find = prepare("SELECT revision FROM revision WHERE request = ?");
        return find.bind_text(request).step() ? find.integer(0) : 0;
    }

    bool is_unchanged(Revision base, const std::vector<Range> &ranges) {
        if (ranges.empty() || base == database_.head())
            return true;
        if (base < database_.setting("horizon"))
            return false;
        const std::vector<std::string> changed = changed_since(base);
        return std::none_of(ranges.begin(), ranges.end(), [&](const Range &range) {
            const auto at = std::lower_bound(changed.begin(), changed.end(), range.first);
            return at != changed.end() && *at < range.end;
        });
    }

    /* Whether all of it could be written. */
    bool write(const Commit &commit) {
        revision_ = database_.head() + 1;
        next_row_ = database_.setting("next_row");
        for (const Write &write : commit.writes) {
            if (!apply(write))
                return false;
        }
        database_.set_setting("next_row", next_row_);
        Statement insert = prepare("INSERT INTO revision VALUES (?, ?, ?, ?)");
        insert.bind(revision_).bind(now()).bind_text(commit.who);
        if (commit.request.empty())
            insert.bind_null();
        else
            insert.bind_text(commit.request);
        insert.run();
        return true;
    }

    /* Forgets the oldest commits that nobody asked to keep, and what they replaced. */
    void forget() {
        const SqliteOptions &options = database_.options;
        Statement oldest = prepare(
            "SELECT revision FROM revision WHERE revision <= ? AND "
            "time < ? ORDER BY revision LIMIT ?");
        oldest.bind(revision_ - options.keep_commits)
            .bind(now() - options.keep_seconds * 1'000'000)
            .bind(kForgottenAtOnce);
        std::vector<Revision> revisions;
        while (oldest.step())
            revisions.push_back(oldest.integer(0));
        for (const Revision revision : revisions)
            forget(revision);
        if (!revisions.empty())
            database_.set_setting("horizon", revisions.back());
    }

    Revision revision() const { return revision_; }

  private:
    Statement prepare(std::string_view sql) { return database_.connection.prepare(sql); }

    std::vector<std::string> changed_since(Revision base) {
        Statement changes = prepare("SELECT key FROM change WHERE revision > ?");
        std::vector<std::string> keys;
        changes.bind(base);
        while (changes.step())
            keys.emplace_back(changes.bytes(0));
        std::sort(keys.begin(), keys.end());
        return keys;
    }

    bool apply(const Write &write) {
        const int64_t row = live_row(write.key);
        switch (write.kind) {
            case Write::Kind::create:
                return row == 0 && create(write);
            case Write::Kind::set:
                return row != 0 && set(write, row);
            default:
                return row != 0 && erase(write, row);
        }
    }

    int64_t live_row(const std::string &key) {
        const ResetAtEnd reset(find_row_);
        return find_row_.bind_blob(key).bind(kForever).step() ? find_row_.integer(0) : 0;
    }

    bool create(const Write &write) {
        const int64_t row = next_row_++;
        insert_row_.bind_blob(write.key)
            .bind(revision_)
            .bind(kForever)
            .bind(row)
            .bind(database_.words.add(write.row_kind))
            .bind_text(write.label)
            .run();
        for (const Attribute &attribute : write.attributes)
            insert(row, attribute);
        return note(write, row);
    }

    bool set(const Write &write, int64_t row) {
        for (const Attribute &attribute : write.attributes) {
            end_attribute_.bind(revision_)
                .bind(row)
                .bind(database_.words.find(attribute.name))
                .bind(kForever)
                .run();
            insert(row, attribute);
        }
        return note(write, row);
    }

    bool erase(const Write &write, int64_t row) {
        end_row_.bind(revision_).bind_blob(write.key).bind(kForever).run();
        end_attributes_.bind(revision_).bind(row).bind(kForever).run();
        return note(write, row);
    }

    void insert(int64_t row, const Attribute &attribute) {
        if (attribute.cell.kind == Cell::Kind::null)
            return;
        Words &words = database_.words;
        insert_attribute_.bind(row)
            .bind(words.add(attribute.name))
            .bind(revision_)
            .bind(kForever)
            .bind(int64_t{attribute.type})
            .bind(words.add(attribute.type_name))
            .bind(attribute.cell)
            .run();
    }

    bool note(const Write &write, int64_t row) {
        insert_change_.bind(revision_)
            .bind_blob(write.key)
            .bind(row)
            .bind(static_cast<int64_t>(write.kind))
            .run();
        return true;
    }

    void forget(Revision revision) {
        Statement rows = prepare("SELECT key, row FROM change WHERE revision = ?");
        Statement drop_rows = prepare("DELETE FROM row WHERE key = ? AND until <= ?");
        Statement drop_attributes = prepare("DELETE FROM attribute WHERE row = ? AND until <= ?");
        rows.bind(revision);
        while (rows.step()) {
            drop_rows.bind_blob(rows.bytes(0)).bind(revision).run();
            drop_attributes.bind(rows.integer(1)).bind(revision).run();
        }
        prepare("DELETE FROM change WHERE revision = ?").bind(revision).run();
        prepare("DELETE FROM revision WHERE revision = ?").bind(revision).run();
    }

    SqliteDatabase &database_;
    Revision revision_ = 0;
    int64_t next_row_ = 0;
    Statement find_row_ = prepare("SELECT id FROM row WHERE key = ? AND until = ?");
    Statement insert_row_ = prepare("INSERT INTO row VALUES (?, ?, ?, ?, ?, ?)");
    Statement end_row_ = prepare("UPDATE row SET until = ? WHERE key = ? AND until = ?");
    Statement insert_attribute_ = prepare("INSERT INTO attribute VALUES (?, ?, ?, ?, ?, ?, ?)");
    Statement end_attribute_ =
        prepare("UPDATE attribute SET until = ? WHERE row = ? AND name = ? AND until = ?");
    Statement end_attributes_ =
        prepare("UPDATE attribute SET until = ? WHERE row = ? AND until = ?");
    Statement insert_change_ = prepare("INSERT INTO change VALUES (?, ?, ?, ?)");
};

CommitResult commit_within(SqliteDatabase &database, const Commit &commit,
                           Transaction &transaction) {
    Committer committer(database);
    if (!commit.request.empty()) {
        const Revision earlier = committer.find_request(commit.request);
        if (earlier != 0)
            return {Status::done, earlier};
    }
    if (!committer.is_unchanged(commit.base, commit.unchanged) || !committer.write(commit))
        return {Status::conflict, 0};
    committer.forget();
    try {
        transaction.commit();
    } catch (const StoreFault &fault) {
        // a writer that had to wait has written nothing; of other faults nobody knows
        if (fault.kind == StoreFault::Kind::busy || fault.kind == StoreFault::Kind::full)
            throw;
        return {Status::unknown, 0};
    }
    return {Status::done, committer.revision()};
}

}  // namespace

CommitResult write_commit(SqliteDatabase &database, const Commit &commit) {
    Transaction transaction(database.connection, Transaction::Aim::write);
    try {
        const CommitResult result = commit_within(database, commit, transaction);
        if (result.status == Status::done)
            database.words.keep_added();
        else
            database.words.drop_added();
        return result;
    } catch (...) {
        database.words.drop_added();
        throw;
    }
}

}  // namespace embedded
