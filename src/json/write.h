// What the writers share.
#ifndef ORU_SRC_JSON_WRITE_H
#define ORU_SRC_JSON_WRITE_H

#include <string_view>

#include "do/strbuf.h"
#include "oru/json.h"

namespace oru::json {

void put(ORUDoStrbuf *strbuf, std::string_view text);

// Between quotes, as it stands. A null text is empty.
void put_raw(ORUDoStrbuf *strbuf, const char *text);

// Between quotes, escaped. Nothing when memory runs out.
void put_escaped(ORUDoStrbuf *strbuf, std::string_view text);

// `"key":` as it stands.
void put_key(ORUDoStrbuf *strbuf, const char *key);

// `,"%typedef":"name"`; nothing for a null name.
void put_typedef(ORUDoStrbuf *strbuf, const char *name);

// Puts a comma in front of every member but the first.
class Members {
  public:
    explicit Members(ORUDoStrbuf *strbuf) : strbuf_(strbuf) {}
    void next() {
        if (!first_)
            put(strbuf_, ",");
        first_ = false;
    }
    void next(const char *key) {
        next();
        put_key(strbuf_, key);
    }

  private:
    ORUDoStrbuf *strbuf_;
    bool first_ = true;
};

}  // namespace oru::json

#endif
