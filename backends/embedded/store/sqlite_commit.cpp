#include <algorithm>
#include <chrono>
#include <functional>

#include "sqlite_parts.h"

namespace embedded {

namespace {

using Status = CommitResult::Status;

// how many old changes a commit forgets at most, so that none pays for many; a larger one forgets
// twice what it writes, so that the old ones cannot pile up
constexpr size_t kForgottenAtOnce = 256;

int64_t now() {
    using std::chrono::duration_cast;
    using std::chrono::microseconds;
    return duration_cast<microseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/* One commit, within its transaction. */
class Committer final : public WriteSink {
  public:
    explicit Committer(SqliteDatabase &database) : database_(database) {}

    /* Whether what the commit builds on is as it was. */
    bool holds(const Commit &commit) {
        const bool asks = !commit.unchanged.empty() || !commit.unchanged_keys.empty();
        if (!asks || commit.base == database_.head())
            return true;
        if (commit.base < database_.setting("horizon"))
            return false;
        const std::vector<std::string> changed = changed_since(commit.base);
        const auto has_changed = [&](const Range &range) {
            const auto at = std::lower_bound(changed.begin(), changed.end(), range.first);
            return at != changed.end() && *at < range.end;
        };
        const auto key_has_changed = [&](std::string_view key) {
            return std::binary_search(changed.begin(), changed.end(), key, std::less<>());
        };
        return std::ranges::none_of(commit.unchanged, has_changed) &&
               std::ranges::none_of(commit.unchanged_keys, key_has_changed);
    }

    /* Whether all of it could be written. */
    bool write(const Commit &commit, const WriteSource &writes) {
        revision_ = database_.head() + 1;
        next_row_ = database_.setting("next_row");
        writes.hand_to(*this);
        if (has_conflict_)
            return false;
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

    /* Forgets the oldest commits that nobody asked to keep, and what they replaced. One with many
       changes goes in parts; none of it can be read from the first on. */
    void forget() {
        size_t left = std::max(kForgottenAtOnce, 2 * written_);
        Statement oldest =
            prepare("SELECT revision, time FROM revision WHERE revision <= ? ORDER BY revision");
        oldest.bind(revision_ - database_.options.keep_commits);
        const int64_t young = now() - database_.options.keep_seconds * 1'000'000;
        std::vector<Revision> over;
        while (left > 0 && oldest.step() && oldest.integer(1) < young) {
            const Revision revision = oldest.integer(0);
            horizon_ = revision;
            const size_t forgotten = forget_changes(revision, left);
            if (forgotten < left)
                over.push_back(revision);
            left -= std::max<size_t>(std::min(forgotten, left), 1);
        }
        oldest.reset();
        for (const Revision revision : over)
            prepare("DELETE FROM revision WHERE revision = ?").bind(revision).run();
        if (horizon_ != 0)
            database_.set_setting("horizon", horizon_);
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

    /* Behind one that is in vain, all are. */
    void write(const Write &write) override {
        written_++;
        if (!is_within_limits(write))
            throw StoreFault(StoreFault::Kind::beyond_limits,
                             "the commit is beyond the limits of the store");
        has_conflict_ = has_conflict_ || !apply(write);
    }

    bool is_within_limits(const Write &write) const {
        const Limits &limits = database_.options.limits;
        return written_ <= limits.commit_writes && write.key.size() <= limits.key_bytes &&
               std::ranges::all_of(write.attributes, [&](const Attribute &attribute) {
                   return attribute.cell.bytes.size() <= limits.value_bytes;
               });
    }

    bool apply(const Write &write) {
        const int64_t row = live_row(write.key);
        switch (write.kind) {
            case Write::Kind::create:
                if (row != 0 && write.is_lenient)
                    erase(write.key, row);
                return (row == 0 || write.is_lenient) && create(write);
            case Write::Kind::set:
                return row != 0 && set(write, row);
            default:
                return row != 0 ? erase(write.key, row) : write.is_lenient;
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
        return note(write.kind, write.key, row);
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
        return note(write.kind, write.key, row);
    }

    bool erase(const std::string &key, int64_t row) {
        end_row_.bind(revision_).bind_blob(key).bind(kForever).run();
        end_attributes_.bind(revision_).bind(row).bind(kForever).run();
        return note(Write::Kind::erase, key, row);
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

    bool note(Write::Kind what, const std::string &key, int64_t row) {
        insert_change_.bind(revision_)
            .bind_blob(key)
            .bind(row)
            .bind(static_cast<int64_t>(what))
            .run();
        return true;
    }

    /* Up to `limit` changes of a revision, and how many there were. */
    size_t forget_changes(Revision revision, size_t limit) {
        Statement rows = prepare("SELECT key, row FROM change WHERE revision = ? LIMIT ?");
        Statement drop_rows = prepare("DELETE FROM row WHERE key = ? AND until <= ?");
        Statement drop_attributes = prepare("DELETE FROM attribute WHERE row = ? AND until <= ?");
        Statement drop = prepare("DELETE FROM change WHERE revision = ? AND key = ? AND row = ?");
        std::vector<std::pair<std::string, int64_t>> changes;
        rows.bind(revision).bind(static_cast<int64_t>(limit));
        while (rows.step())
            changes.emplace_back(rows.bytes(0), rows.integer(1));
        for (const auto &[key, row] : changes) {
            drop_rows.bind_blob(key).bind(revision).run();
            drop_attributes.bind(row).bind(revision).run();
            drop.bind(revision).bind_blob(key).bind(row).run();
        }
        return changes.size();
    }

    SqliteDatabase &database_;
    Revision revision_ = 0;
    int64_t next_row_ = 0;
    size_t written_ = 0;
    bool has_conflict_ = false;
    Revision horizon_ = 0; /* that is new */
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
                           const WriteSource &writes, Transaction &transaction) {
    const Revision earlier = find_request(database, commit.request);
    if (earlier != 0)
        return {Status::done, earlier};
    Committer committer(database);
    if (!committer.holds(commit) || !committer.write(commit, writes))
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

Revision find_request(SqliteDatabase &database, std::string_view request) {
    if (request.empty())
        return 0;
    Statement find = database.connection.prepare("SELECT revision FROM revision WHERE request = ?");
    const ResetAtEnd reset(find);
    return find.bind_text(request).step() ? find.integer(0) : 0;
}

CommitResult write_commit(SqliteDatabase &database, const Commit &commit,
                          const WriteSource &writes) {
    Transaction transaction(database.connection, Transaction::Aim::write);
    try {
        const CommitResult result = commit_within(database, commit, writes, transaction);
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
