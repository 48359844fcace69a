#include "oru/print.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdio>
#include <functional>
#include <string>

#include "oru/config_op.h"
#include "oru/event.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace {

// What a call writes to a stream.
std::string written(const std::function<int32_t(FILE *)> &print) {
    FILE *stream = std::tmpfile();
    EXPECT_EQ(print(stream), 0);
    std::rewind(stream);
    std::string text;
    for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream))
        text += static_cast<char>(c);
    std::fclose(stream);
    return text;
}

template <auto print, class Object>
void expect_prints(Object *object, int32_t tabs, const std::string &text) {
    auto body = [=](FILE *stream) { return print(stream, tabs, object); };
    EXPECT_EQ(written(body), text);
    EXPECT_EQ(
        written([=](FILE *stream) { return print(stream, tabs, static_cast<Object *>(nullptr)); }),
        "");
    // Neither without a buffer, nor without its storage.
    for (uint64_t nth = 1; nth <= 2; ++nth) {
        poolheap_fail_nth(nth, 1);
        EXPECT_EQ(written(body), "");
        poolheap_fail_off();
    }
}

TEST(Print, WritesTheTextFormOfScalarsAndLists) {
    ORUDoValue *value = oru_do_value_new_int(7);
    expect_prints<oru_do_print_value>(value, 1, "\t7");

    ORUDoNvlist *nvlist = oru_do_nvlist_new_from_item("k", value);
    expect_prints<oru_do_print_nvlist>(nvlist, 1, "{k : 7}");
    oru_do_nvlist_deref(nvlist);

    ORUDoVlist *vlist = oru_do_vlist_new();
    oru_do_vlist_add(vlist, value);
    expect_prints<oru_do_print_vlist>(vlist, 1, "\t[\n\t\t7\n]\n");
    oru_do_vlist_deref(vlist);
    oru_do_value_deref(value);

    ORUDoUri *uri = oru_do_uri_new("/a/b");
    expect_prints<oru_do_print_uri>(uri, 1, "\t/a/b");
    oru_do_uri_deref(uri);

    ORUDoNlist *nlist = oru_do_nlist_new();
    oru_do_nlist_add_string(nlist, "n");
    expect_prints<oru_do_print_nlist>(nlist, 1, "\t[n]\n");
    oru_do_nlist_deref(nlist);

    ORUDoNtlist *ntlist = oru_do_ntlist_new();
    ORUDoName *name = oru_do_name_new("n");
    oru_do_ntlist_add_builtin_type(ntlist, name, 5, nullptr);
    expect_prints<oru_do_print_ntlist>(ntlist, 1, "[\nn 5]\n");
    oru_do_name_deref(name);
    oru_do_ntlist_deref(ntlist);
}

TEST(Print, WritesTheTextFormOfOperationsAndEvents) {
    ORUDoUri *uri = oru_do_uri_new("/a");
    ORUDoConfigOps *ops = oru_do_config_ops_new();
    oru_do_config_ops_add(ops, 2, uri, nullptr, nullptr, nullptr, nullptr);
    expect_prints<oru_do_print_config_ops>(ops, 1, "[(/a:2:-) ]");
    oru_do_config_ops_deref(ops);

    ORUDoName *name = oru_do_name_new("e");
    ORUDoEvent *event = oru_do_event_new(name, uri, 3, 4, nullptr);
    expect_prints<oru_do_print_event>(event, 1, "\tEvent(e):/a-3-4\n\n\t}\n");
    oru_do_event_deref(event);
    oru_do_name_deref(name);
    oru_do_uri_deref(uri);
}

TEST(Print, WritesTheTextFormOfProperties) {
    ORUDoProperties *props = oru_do_properties_new();
    oru_do_properties_set_int(props, "a", 7);
    oru_do_value_set_default_flag(oru_do_properties_get_value(props, "a"));
    expect_prints<oru_do_print_property>(oru_do_properties_get_prop(props, "a"), 1, "\ta : 7");
    expect_prints<oru_do_print_properties>(props, 1, "{ a : 7 }");
    expect_prints<oru_do_print_properties_with_defaults>(props, 1, "{ a : 7 (default) }");

    ORUDoPropertiesList *list = oru_do_properties_list_new();
    oru_do_properties_list_add(list, props);
    expect_prints<oru_do_print_properties_list>(list, 1, "[{ a : 7 }]");
    oru_do_properties_list_deref(list);
    oru_do_properties_deref(props);
}

TEST(Print, WritesTabs) {
    EXPECT_EQ(written([](FILE *stream) { return oru_do_print_tab(stream, 3); }), "\t\t\t");
    EXPECT_EQ(written([](FILE *stream) { return oru_do_print_tab(stream, 0); }), "");
    EXPECT_EQ(written([](FILE *stream) { return oru_do_print_tab(stream, -1); }), "");
}

TEST(Print, WritesBytesAsSignedCharacters) {
    const uint8_t bytes[] = {0x00, 0x0a, 0x7f, 0x80, 0xff};
    EXPECT_EQ(written([&](FILE *stream) { return oru_do_print_hex_buf(stream, 9, bytes, 5); }),
              "0 a 7f ffffff80 ffffffff \n");
    EXPECT_EQ(written([&](FILE *stream) { return oru_do_print_hex_buf(stream, 0, bytes, 0); }),
              "\n");
}

}  // namespace
