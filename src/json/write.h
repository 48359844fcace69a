// What the writers share.
#ifndef ORU_SRC_JSON_WRITE_H
#define ORU_SRC_JSON_WRITE_H

#include <string_view>
#include <utility>

#include "do/strbuf.h"
#include "oru/json.h"

namespace oru::json {

inline void put(ORUDoStrbuf *strbuf, std::string_view text) {
    ORU_REQUIRE(strbuf);
    strbuf_append(*strbuf, text);
}

// Between quotes, as it stands. A null text is empty.
void put_raw(ORUDoStrbuf *strbuf, const char *text);

// Between quotes, escaped. Nothing when memory runs out, of which only texts with something to
// escape take any.
void put_escaped(ORUDoStrbuf *strbuf, std::string_view text);

// `"key":` as it stands, with a text in front of it.
void put_key(ORUDoStrbuf *strbuf, std::string_view key, std::string_view before = {});

// A value by the options.
void put_value(ORUDoStrbuf *strbuf, const ORUDoValue &val, uint32_t options);

// `,"%typedef":"name"`; nothing for a null name.
void put_typedef(ORUDoStrbuf *strbuf, const char *name);

// Puts a comma in front of every member but the first.
class Members {
  public:
    explicit Members(ORUDoStrbuf *strbuf) : strbuf_(strbuf) {}
    void next() { put(strbuf_, comma()); }
    void next(std::string_view key) { put_key(strbuf_, key, comma()); }

  private:
    std::string_view comma() { return std::exchange(comma_, ","); }

    ORUDoStrbuf *strbuf_;
    std::string_view comma_{};
};

}  // namespace oru::json

#endif
