// Writing and reading as texts.
#ifndef ORU_TESTS_UNIT_JSON_SUPPORT_H
#define ORU_TESTS_UNIT_JSON_SUPPORT_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "oru/error.h"
#include "oru/json.h"
#include "oru/strbuf.h"
#include "oru/value.h"

namespace oru::test {

template <auto deref>
struct Deref {
    template <class Object>
    void operator()(Object *object) const {
        deref(object);
    }
};

template <class Object, auto deref>
using Owned = std::unique_ptr<Object, Deref<deref>>;

using Value = Owned<ORUDoValue, oru_do_value_deref>;
using Error = Owned<ORUDoError, oru_do_error_deref>;
using Context = Owned<ORUDoJsonCtxData, oru_do_json_delete_ctx_data>;

// What a writer appends, called with the buffer.
template <class Write>
std::string written(Write &&write) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    EXPECT_EQ(write(buf), 0);
    std::string text = oru_do_strbuf_to_string(buf);
    oru_do_strbuf_deref(buf);
    return text;
}

inline std::string json_of(ORUDoValue *value, uint32_t options = 0) {
    return written([&](ORUDoStrbuf *b) { return oru_do_value_to_json_opt(value, b, options); });
}

inline int32_t size_of(const std::string &text) {
    return static_cast<int32_t>(text.size());
}

// A value read from a text of exactly its length.
inline Value value_from(const std::string &text, ORUDoError **errp = nullptr) {
    return Value(oru_do_value_from_json(text.data(), size_of(text), errp));
}

inline Context parsed(const std::string &text, int64_t expected = 0) {
    return Context(oru_do_json_parse(text.data(), size_of(text), expected));
}

// The code of what went wrong in a parse, 0 for nothing.
inline int32_t code_of(const Context &ctx) {
    return ctx->err != nullptr ? oru_do_error_get_code(ctx->err) : 0;
}

// The tagged form of the value that a text gives, "none" without one.
inline std::string read_back(const std::string &text) {
    const Value value = value_from(text);
    return value != nullptr ? json_of(value.get()) : "none";
}

}  // namespace oru::test

#endif
