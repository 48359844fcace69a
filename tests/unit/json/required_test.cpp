// What writers require: the object, under the name that it has in the header, and the buffer.
#include <oruplatform/poolheap.h>

#include <functional>
#include <string>

#include "oru/config_op.h"
#include "oru/dtree.h"
#include "oru/event.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "tests/support/death.h"
#include "tests/unit/json/support.h"

namespace {

template <class Object>
using Writer = int32_t (*)(Object *, ORUDoStrbuf *);

template <class Object>
using WriterWithOptions = int32_t (*)(Object *, ORUDoStrbuf *, uint32_t);

void expect_assertion(const std::function<void()> &body, const std::string &text) {
    EXPECT_DEATH(body(), oru::test::literal("Assertion `" + text + "' failed.")) << text;
}

// An object of a kind, which is released, under the name that its writer gives it.
template <class Object>
void expect_required(Writer<Object> write, Object *object, void (*deref)(Object *),
                     const std::string &name) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    expect_assertion([&] { write(nullptr, buf); }, name);
    expect_assertion([&] { write(object, nullptr); }, "strbuf");
    EXPECT_EQ(write(object, buf), 0) << name;
    deref(object);
    oru_do_strbuf_deref(buf);
}

template <class Object>
void expect_required_opt(WriterWithOptions<Object> write, Object *object, void (*deref)(Object *),
                         const std::string &name) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    for (const uint32_t options : {0u, 1u, 15u}) {
        expect_assertion([&] { write(nullptr, buf, options); }, name);
        expect_assertion([&] { write(object, nullptr, options); }, "strbuf");
        EXPECT_EQ(write(object, buf, options), 0) << name;
    }
    deref(object);
    oru_do_strbuf_deref(buf);
}

#define EXPECT_REQUIRED(name, text, make) \
    expect_required(oru_do_##name##_to_json, make, oru_do_##name##_deref, text)
#define EXPECT_REQUIRED_OPT(name, text, make) \
    EXPECT_REQUIRED(name, text, make);        \
    expect_required_opt(oru_do_##name##_to_json_opt, make, oru_do_##name##_deref, text)

template <class Object>
Object *from(Object *(*read)(const char *, int32_t, ORUDoError **), const std::string &text) {
    return read(text.data(), oru::test::size_of(text), nullptr);
}

TEST(JsonRequired, WritersOfValues) {
    EXPECT_REQUIRED_OPT(value, "val", oru_do_value_new_int(1));
    EXPECT_REQUIRED_OPT(value, "val", oru_do_value_new_null());
    EXPECT_REQUIRED_OPT(value, "val", oru_do_value_new_string("a"));
    EXPECT_REQUIRED_OPT(value, "val", oru_do_value_new_boolean(1));
    EXPECT_REQUIRED_OPT(value, "val", oru_do_value_new_double(1));
    EXPECT_REQUIRED_OPT(value, "val", oru_do_value_new_hex_binary("a", 1));
    EXPECT_REQUIRED_OPT(value, "val", from(oru_do_value_from_json, R"({"%int":[1]})"));
    EXPECT_REQUIRED_OPT(value, "val", from(oru_do_value_from_json, R"({"%choice":{"a":1}})"));
    EXPECT_REQUIRED_OPT(value, "val", from(oru_do_value_from_json, R"({"%mr_uri":"/a"})"));
    ORUDoValue *value = oru_do_value_new_int(1);
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    EXPECT_ASSERTION(oru_do_value_to_compact_json(nullptr, buf), "val");
    EXPECT_ASSERTION(oru_do_value_to_compact_json(value, nullptr), "strbuf");
    oru_do_strbuf_deref(buf);
    oru_do_value_deref(value);
}

TEST(JsonRequired, WritersOfLists) {
    EXPECT_REQUIRED(vlist, "vlist", oru_do_vlist_new());
    EXPECT_REQUIRED(nlist, "nlist", oru_do_nlist_new());
    EXPECT_REQUIRED_OPT(nvlist, "nvlist", oru_do_nvlist_new());
    EXPECT_REQUIRED_OPT(vtable, "vtable", oru_do_vtable_new());
    EXPECT_REQUIRED_OPT(properties, "props", oru_do_properties_new());
    EXPECT_REQUIRED_OPT(properties_list, "list", oru_do_properties_list_new());
    EXPECT_REQUIRED_OPT(config_ops, "config_ops", oru_do_config_ops_new());
    ORUDoVlist *list = oru_do_vlist_new();
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    EXPECT_ASSERTION(oru_do_vlist_to_json_opt(nullptr, buf, 0, nullptr), "vlist");
    EXPECT_ASSERTION(oru_do_vlist_to_json_opt(list, nullptr, 0, nullptr), "strbuf");
    oru_do_strbuf_deref(buf);
    oru_do_vlist_deref(list);
}

TEST(JsonRequired, WritersOfObjects) {
    EXPECT_REQUIRED(error, "err", oru_do_error_new(1, "a"));
    EXPECT_REQUIRED(prop_errs, "prop_errs", oru_do_prop_errs_new());
    EXPECT_REQUIRED(dtree, "dtree", oru_do_dtree_new_str("a"));
    EXPECT_REQUIRED_OPT(event, "event",
                        from(oru_do_event_from_json,
                             R"({"name":"e","mr_uri":"/a","info":{"%properties":{"n":5}}})"));
}

TEST(JsonRequired, WritersOfBareForms) {
    EXPECT_ASSERTION(oru_do_integer_to_json(1, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_double_to_json(nullptr, 1), "strbuf");
    EXPECT_ASSERTION(oru_do_string_to_json("a", 1, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_string_to_json(nullptr, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_null_to_json(nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_bool_to_json(0, nullptr), "strbuf");
    EXPECT_EQ(
        oru::test::written([](ORUDoStrbuf *b) { return oru_do_string_to_json(nullptr, 3, b); }),
        R"("")");
}

// A buffer in error takes nothing more, and writers give 0 all the same.
TEST(JsonRequired, ABufferInErrorStaysAsItIs) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    oru_do_strbuf_add_string(buf, "before ");
    poolheap_fail_nth(1, 1);
    oru_do_strbuf_add_string(buf, std::string(600, 'x').c_str());
    poolheap_fail_off();
    ASSERT_EQ(oru_do_strbuf_get_err(buf), 10002);
    ORUDoValue *value = from(oru_do_value_from_json, R"({"%sequence":{"a":"x\n","b":[1,2]}})");
    EXPECT_EQ(oru_do_value_to_json(value, buf), 0);
    EXPECT_EQ(oru_do_string_to_json("a", 1, buf), 0);
    EXPECT_EQ(oru_do_integer_to_json(1, buf), 0);
    EXPECT_EQ(oru_do_double_to_json(buf, 1), 0);
    EXPECT_EQ(oru_do_null_to_json(buf), 0);
    EXPECT_EQ(oru_do_bool_to_json(1, buf), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf), "before ");
    oru_do_value_deref(value);
    oru_do_strbuf_deref(buf);
}

}  // namespace
