// What a collection is asked for, and the cursor that answers.
#ifndef ORU_TESTS_BEHAVIOUR_CURSOR_H
#define ORU_TESTS_BEHAVIOUR_CURSOR_H

#include "back_end.h"
#include "script.h"

namespace behaviour {

// The details of a request that reads.
struct ReadOptions {
    NameValueList where;
    NameList order;
    bool return_defaults = true;
    bool is_operational = false;
    bool shows_secrets = false;
    bool shows_types = false;
    bool is_total = false; /* only how many rows there are */
};

ReadOptions read_options(const std::vector<Line> &details);

class Cursor {
  public:
    // Names are those of the columns behind `_uri` and `_mr`, which every request asks for.
    Cursor(const BackEnd &back_end, const std::string &collection, const Lines &names,
           const ReadOptions &options);
    ~Cursor();
    Cursor(const Cursor &) = delete;
    Cursor &operator=(const Cursor &) = delete;

    // Of the opening, and of the last batch.
    int32_t code() const { return code_; }
    bool may_have_more() const { return code_ == ORU_OK; }

    // One batch of at most so many rows; 0 leaves the number to the back end.
    Lines next(uint32_t count);

    // All rows, in batches of that size.
    Lines all(uint32_t count);

  private:
    bool shows_types_;
    bool is_operational_;
    ORUDtlCursor *cursor_ = nullptr;
    int32_t code_ = ORU_OK;
};

}  // namespace behaviour

#endif
