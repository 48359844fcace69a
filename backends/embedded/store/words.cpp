#include "words.h"

namespace embedded {

Words::Words(Connection &connection)
    : find_(connection.prepare("SELECT id FROM word WHERE text = ?")),
      text_(connection.prepare("SELECT text FROM word WHERE id = ?")),
      add_(connection.prepare("INSERT INTO word (text) VALUES (?)")),
      database_(connection.get()) {}

std::string_view Words::remember(int64_t id, std::string_view text) {
    const std::string_view kept = texts_.emplace_back(text);
    by_id_.emplace(id, kept);
    ids_.emplace(kept, id);
    return kept;
}

int64_t Words::find(std::string_view text) {
    if (text.empty())
        return kNone;
    const auto known = ids_.find(text);
    if (known != ids_.end())
        return known->second;
    const ResetAtEnd reset(find_);
    if (!find_.bind_text(text).step())
        return kNone;
    const int64_t id = find_.integer(0);
    remember(id, text);
    return id;
}

int64_t Words::add(std::string_view text) {
    const int64_t known = find(text);
    if (known != kNone || text.empty())
        return known;
    add_.bind_text(text).run();
    const int64_t id = sqlite3_last_insert_rowid(database_);
    added_.push_back(id);
    remember(id, text);
    return id;
}

void Words::drop_added() {
    for (const int64_t id : added_) {
        const auto known = by_id_.find(id);
        if (known == by_id_.end())
            continue;
        ids_.erase(known->second);
        by_id_.erase(known);
    }
    added_.clear();
}

std::string_view Words::text(int64_t id) {
    if (id == kNone)
        return {};
    const auto known = by_id_.find(id);
    if (known != by_id_.end())
        return known->second;
    const ResetAtEnd reset(text_);
    if (!text_.bind(id).step())
        return {};
    return remember(id, text_.bytes(0));
}

}  // namespace embedded
