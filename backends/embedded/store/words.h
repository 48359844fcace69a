/* The names that rows and attributes repeat, each kept once and known by a number. */
#ifndef EMBEDDED_WORDS_H
#define EMBEDDED_WORDS_H

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "sqlite.h"

namespace embedded {

/* Words are never changed or taken away, so that what was read once stays true. */
class Words {
  public:
    static constexpr int64_t kNone = 0;

    explicit Words(Connection &connection);

    /* The number of a word, `kNone` for one that nobody has used. */
    int64_t find(std::string_view text);

    /* The same, and a new number for a new word: within a transaction that writes. Until
       `keep_added` is called the new numbers are known to this transaction only. */
    int64_t add(std::string_view text);

    /* The transaction is over: its new words stay, or are forgotten. */
    void keep_added() { added_.clear(); }
    void drop_added();

    /* The word of a number; the empty one for `kNone`. */
    std::string_view text(int64_t id);

  private:
    std::string_view remember(int64_t id, std::string_view text);

    Statement find_;
    Statement text_;
    Statement add_;
    sqlite3 *database_;
    std::deque<std::string> texts_; /* never move */
    std::unordered_map<std::string_view, int64_t> ids_;
    std::unordered_map<int64_t, std::string_view> by_id_;
    std::vector<int64_t> added_;
};

}  // namespace embedded

#endif
