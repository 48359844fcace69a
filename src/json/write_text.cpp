#include <yajl/yajl_gen.h>

#include "json/write.h"
#include "json/yajl_memory.h"

void oru::json::put(ORUDoStrbuf *strbuf, std::string_view text) {
    ORU_REQUIRE(strbuf);
    strbuf_append(*strbuf, text);
}

void oru::json::put_raw(ORUDoStrbuf *strbuf, const char *text) {
    put(strbuf, "\"");
    put(strbuf, text != nullptr ? text : "");
    put(strbuf, "\"");
}

void oru::json::put_escaped(ORUDoStrbuf *strbuf, std::string_view text) {
    ORU_REQUIRE(strbuf);
    YajlMemory memory;
    const unsigned char *escaped = nullptr;
    size_t length = 0;
    auto generate = [&] {
        yajl_gen generator = yajl_gen_alloc(memory.functions());
        yajl_gen_string(generator, reinterpret_cast<const unsigned char *>(text.data()),
                        text.size());
        yajl_gen_get_buf(generator, &escaped, &length);
    };
    if (memory.run(generate))
        put(strbuf, {reinterpret_cast<const char *>(escaped), length});
}

void oru::json::put_key(ORUDoStrbuf *strbuf, const char *key) {
    put_raw(strbuf, key);
    put(strbuf, ":");
}

void oru::json::put_typedef(ORUDoStrbuf *strbuf, const char *name) {
    if (name == nullptr)
        return;
    put(strbuf, ",\"%typedef\":");
    put_escaped(strbuf, name);
}

int32_t oru_do_integer_to_json(int64_t value, ORUDoStrbuf *buf) {
    oru_do_strbuf_add_long(buf, value);
    return 0;
}

int32_t oru_do_double_to_json(ORUDoStrbuf *buf, double value) {
    oru_do_strbuf_add_double(buf, value);
    return 0;
}

int32_t oru_do_string_to_json(const char *text, int32_t length, ORUDoStrbuf *buf) {
    const bool empty = text == nullptr || length < 1;
    oru::json::put_escaped(
        buf, empty ? std::string_view("") : std::string_view(text, static_cast<size_t>(length)));
    return 0;
}

int32_t oru_do_null_to_json(ORUDoStrbuf *buf) {
    oru::json::put(buf, "null");
    return 0;
}

int32_t oru_do_bool_to_json(int32_t value, ORUDoStrbuf *buf) {
    oru::json::put(buf, value != 0 ? "true" : "false");
    return 0;
}
