// The words of a line: names, addresses, values, where clauses.
#ifndef ORU_TESTS_BEHAVIOUR_READER_H
#define ORU_TESTS_BEHAVIOUR_READER_H

#include <string>
#include <string_view>
#include <vector>

#include "handles.h"

namespace behaviour {

class Reader {
  public:
    explicit Reader(std::string_view text) : rest_(text) {}

    // Whether nothing is left but blanks.
    bool at_end();

    // Takes a word when it comes next.
    bool takes(std::string_view word);

    // Up to the next blank; not empty.
    std::string word();

    // All that is left, as words.
    std::vector<std::string> words();

    // Takes the name in front of an equal sign, and the sign.
    std::string name();

    /*
     * A value: 5, 1.5, true, null, default, /address, "text", a word that is none of them and so a
     * text, TYPE:text, [elements], {name=value ...}, choice{name=value}.
     */
    Value value();

    // Adds the items of a where clause, between commas: NAME [OPERATOR] VALUE, or(items),
    // and(items).
    void where(ORUDoNvlist *items);

    // Names and directions of an order between commas.
    NameList order();

  private:
    void skip_blanks();
    bool takes_sign(char sign);
    std::string quoted();
    std::string bare();
    Value array();
    Value members(bool is_choice);
    void where_item(ORUDoNvlist *items);
    std::string where_operator();

    std::string_view rest_;
};

}  // namespace behaviour

#endif
