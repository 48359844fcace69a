// What every counted type has of the object core: its name in the messages, null accepted, a count
// of zero that is terminal.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "oru/oru.h"
#include "tests/support/death.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

ORUDoMrMeta *make_mr_meta() {
    ORUDoName *package = oru_do_name_new("p");
    ORUDoName *name = oru_do_name_new("b");
    ORUDoPropMetaList *props = oru_do_prop_meta_list_new();
    ORUDoMrMeta *meta = oru_do_mr_meta_new(package, nullptr, name, ORU_ACCESS_READ, props, nullptr);
    oru_do_prop_meta_list_deref(props);
    oru_do_name_deref(name);
    oru_do_name_deref(package);
    return meta;
}

ORUDoPropMeta *make_prop_meta() {
    ORUDoName *name = oru_do_name_new("a");
    ORUDoName *type = oru_do_name_new("int");
    ORUDoPropMeta *meta =
        oru_do_prop_meta_new(name, 1, 0, 0, nullptr, -3, type, 0, 0, ORU_ACCESS_READ, 1);
    oru_do_name_deref(type);
    oru_do_name_deref(name);
    return meta;
}

struct Type {
    const char *name;
    void *(*make)();
};

template <auto make>
void *made() {
    return make();
}

const Type kTypes[] = {
    {"oru_do_act_meta",
     [] { return static_cast<void *>(oru_do_act_meta_new(nullptr, nullptr, nullptr, nullptr)); }},
    {"oru_do_act_meta_list", made<oru_do_act_meta_list_new>},
    {"oru_do_condition", [] { return static_cast<void *>(oru_do_condition_new("a.values(1)")); }},
    {"oru_do_config_op",
     [] {
         return static_cast<void *>(
             oru_do_config_op_new(1, nullptr, nullptr, nullptr, nullptr, nullptr));
     }},
    {"oru_do_config_ops", made<oru_do_config_ops_new>},
    {"oru_do_constraint",
     [] { return static_cast<void *>(oru_do_constraint_new(nullptr, "values(1)")); }},
    {"oru_do_constraint_list", made<oru_do_constraint_list_new>},
    {"oru_do_dtree", [] { return static_cast<void *>(oru_do_dtree_new_str("a")); }},
    {"oru_do_error", [] { return static_cast<void *>(oru_do_error_new(1, nullptr)); }},
    {"oru_do_error_list", made<oru_do_error_list_new>},
    {"oru_do_event",
     [] { return static_cast<void *>(oru_do_event_new(nullptr, nullptr, 0, 0, nullptr)); }},
    {"oru_do_mr_meta", made<make_mr_meta>},
    {"oru_do_mr_meta_bool", [] { return static_cast<void *>(oru_do_mr_meta_bool_new(1)); }},
    {"oru_do_mr_meta_list", made<oru_do_mr_meta_list_new>},
    {"oru_do_name", [] { return static_cast<void *>(oru_do_name_new("a")); }},
    {"oru_do_nlist", made<oru_do_nlist_new>},
    {"oru_do_ntlist", made<oru_do_ntlist_new>},
    {"oru_do_nvlist", made<oru_do_nvlist_new>},
    {"oru_do_prop_errs", made<oru_do_prop_errs_new>},
    {"oru_do_prop_meta", made<make_prop_meta>},
    {"oru_do_prop_meta_list", made<oru_do_prop_meta_list_new>},
    {"oru_do_properties", made<oru_do_properties_new>},
    {"oru_do_properties_list", made<oru_do_properties_list_new>},
    {"oru_do_range", [] { return static_cast<void *>(oru_do_range_new_s("1..5")); }},
    {"oru_do_rows_properties", made<oru_do_rows_properties_new>},
    {"oru_do_strbuf", made<oru_do_strbuf_new>},
    {"oru_do_typedef_meta",
     [] { return static_cast<void *>(oru_do_typedef_meta_new_builtin(5, nullptr)); }},
    {"oru_do_uri", [] { return static_cast<void *>(oru_do_uri_new("/a")); }},
    {"oru_do_value", made<oru_do_value_new_null>},
    {"oru_do_vlist", made<oru_do_vlist_new>},
    {"oru_do_vtable", made<oru_do_vtable_new>},
};

class CountedType : public testing::TestWithParam<Type> {
  protected:
    CountedType() : ref(find<void *>("_ref")), deref(find<void>("_deref")) {}

    template <class Result>
    static Result (*find(const char *operation))(void *) {
        const std::string name = std::string(GetParam().name) + operation;
        return reinterpret_cast<Result (*)(void *)>(dlsym(RTLD_DEFAULT, name.c_str()));
    }
    static std::string message(const char *verb, const void *object, unsigned count) {
        char text[100];
        std::snprintf(text, sizeof text, "oru %s %s %p %u", verb, GetParam().name, object, count);
        return text;
    }

    void *(*ref)(void *);
    void (*deref)(void *);
};

TEST_P(CountedType, IsTracedUnderItsNameFromItsBirthToItsEnd) {
    ASSERT_NE(ref, nullptr);
    ASSERT_NE(deref, nullptr);
    TraceCapture traces(8);
    void *object = GetParam().make();
    ASSERT_NE(object, nullptr);
    EXPECT_TRUE(traces.has(8, message("ref", object, 1)));
    traces.clear();
    EXPECT_EQ(ref(object), object);
    deref(object);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{8, message("ref", object, 2)},
                                                  {8, message("deref", object, 2)}}));
    traces.clear();
    deref(object);
    ASSERT_FALSE(traces.lines().empty());
    EXPECT_EQ(traces.lines().front(), (Trace{8, message("deref", object, 1)}));
}

TEST_P(CountedType, TakesNullWithoutATrace) {
    TraceCapture traces(8);
    EXPECT_EQ(ref(nullptr), nullptr);
    deref(nullptr);
    EXPECT_TRUE(traces.lines().empty());
}

TEST_P(CountedType, StaysDeadAtZero) {
    alignas(16) char dead[1024] = "";
    TraceCapture traces(8);
    EXPECT_EQ(ref(dead), dead);
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{8, message("ref", dead, 0)}}));
    EXPECT_EQ(std::string(dead, sizeof dead), std::string(sizeof dead, '\0'));
    char words[200];
    std::snprintf(words, sizeof words, "Fatal problem in %s deref handling %p", GetParam().name,
                  static_cast<void *>(dead));
    EXPECT_FATAL(deref(dead), words);
}

INSTANTIATE_TEST_SUITE_P(Every, CountedType, testing::ValuesIn(kTypes),
                         [](const auto &type) { return std::string(type.param.name); });

}  // namespace
