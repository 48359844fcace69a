// Links as somebody would read and write them in SQL who knows the tables of the store, and needs
// neither checks nor revisions: statements that are prepared once, values as they come.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "store/sqlite.h"

namespace oru::bench {

struct Link {
    std::string address;
    std::string id;
    int64_t cost = 0;
    int64_t speed = 0;
};

// The key of a link in the store: behind the collection the length of its id and the id.
inline std::string link_key(const std::string &id) {
    std::string key("r\1links\0s\0\0\0", 12);
    key += static_cast<char>(id.size());
    return key + id;
}

class LinksByHand {
  public:
    explicit LinksByHand(const std::string &database) : connection_(database) {
        connection_.execute("PRAGMA synchronous = FULL");
        cost_ = word("cost");
        id_ = word("id");
        speed_ = word("speed");
        kind_ = word("com.example.network:1.0/Link");
        insert_row_ = connection_.prepare("INSERT INTO row VALUES (?, ?, ?, ?, ?, ?)");
        insert_attribute_ =
            connection_.prepare("INSERT INTO attribute VALUES (?, ?, ?, ?, ?, 0, ?)");
        insert_change_ = connection_.prepare("INSERT INTO change VALUES (?, ?, ?, 0)");
        page_ = connection_.prepare(
            "SELECT key, label, id FROM row WHERE key > ? AND key < ? AND until = ? "
            "ORDER BY key LIMIT ?");
        one_ = connection_.prepare("SELECT key, label, id FROM row WHERE key = ? AND until = ?");
        attributes_ = connection_.prepare(
            "SELECT name, type, value FROM attribute WHERE row = ? AND until = ?");
    }

    void insert(const std::vector<std::string> &ids) {
        using embedded::Transaction;
        Transaction transaction(connection_, Transaction::Aim::write);
        const int64_t revision = ask("SELECT max(revision) FROM revision") + 1;
        int64_t row = ask("SELECT value FROM setting WHERE name = 'next_row'");
        for (const std::string &id : ids)
            insert(id, row++, revision);
        connection_.execute(
            ("UPDATE setting SET value = " + std::to_string(row) + " WHERE name = 'next_row'")
                .c_str());
        connection_.execute(
            ("INSERT INTO revision VALUES (" + std::to_string(revision) + ", 0, '', NULL)")
                .c_str());
        transaction.commit();
    }

    // The links behind a key, in order, and the key of the last one.
    std::vector<Link> page(std::string &key, int64_t count) {
        const std::string end("r\1links\1", 8);
        std::vector<Link> links;
        page_.bind_blob(key).bind_blob(end).bind(kForever).bind(count);
        while (page_.step()) {
            key = page_.bytes(0);
            links.push_back(link_at(page_));
        }
        return links;
    }

    Link one(const std::string &id) {
        const std::string key = link_key(id);
        const embedded::ResetAtEnd reset(one_);
        one_.bind_blob(key).bind(kForever);
        return one_.step() ? link_at(one_) : Link();
    }

  private:
    static constexpr int64_t kForever = std::numeric_limits<int64_t>::max();

    int64_t ask(const char *sql) {
        embedded::Statement statement = connection_.prepare(sql);
        const embedded::ResetAtEnd reset(statement);
        return statement.step() ? statement.integer(0) : 0;
    }

    int64_t word(const char *text) {
        embedded::Statement find = connection_.prepare("SELECT id FROM word WHERE text = ?");
        const embedded::ResetAtEnd reset(find);
        return find.bind_text(text).step() ? find.integer(0) : 0;
    }

    void insert(const std::string &id, int64_t row, int64_t revision) {
        const std::string key = link_key(id);
        const std::string label = "//locations;locationId=global/links;id=" + id;
        insert_row_.bind_blob(key).bind(revision).bind(kForever).bind(row).bind(kind_);
        insert_row_.bind_text(label).run();
        attribute(row, id_, revision, 8).bind_text(id).run();
        attribute(row, cost_, revision, 5).bind(row).run();
        attribute(row, speed_, revision, 6).bind(int64_t{1'000'000'000}).run();
        insert_change_.bind(revision).bind_blob(key).bind(row).run();
    }

    embedded::Statement &attribute(int64_t row, int64_t name, int64_t revision, int64_t type) {
        return insert_attribute_.bind(row).bind(name).bind(revision).bind(kForever).bind(type);
    }

    Link link_at(const embedded::Statement &row) {
        Link link;
        link.address = row.bytes(1);
        attributes_.bind(row.integer(2)).bind(kForever);
        while (attributes_.step()) {
            const int64_t name = attributes_.integer(0);
            if (name == id_)
                link.id = attributes_.bytes(2);
            else
                (name == cost_ ? link.cost : link.speed) = attributes_.integer(2);
        }
        return link;
    }

    embedded::Connection connection_;
    int64_t cost_ = 0;
    int64_t id_ = 0;
    int64_t speed_ = 0;
    int64_t kind_ = 0;
    embedded::Statement insert_row_;
    embedded::Statement insert_attribute_;
    embedded::Statement insert_change_;
    embedded::Statement page_;
    embedded::Statement one_;
    embedded::Statement attributes_;
};

}  // namespace oru::bench
