// The table of types, row by row, and the check that its deserialisers begin with.
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <cstring>
#include <string>
#include <vector>

#include "oru/config_op.h"
#include "oru/constraint.h"
#include "oru/dtree.h"
#include "oru/event.h"
#include "oru/mr_meta.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/typedef_meta.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::code_of;
using oru::test::Context;
using oru::test::parsed;
using oru::test::TraceCapture;

struct Row {
    const char *tag;
    int64_t code;
    int32_t value_type;
};

constexpr Row kRows[] = {
    {"%ubyte", 0x50001, 0},
    {"%unsignedByte", 0x50001, 0},
    {"%byte", 0x50002, 1},
    {"%ushort", 0x50003, 2},
    {"%unsignedShort", 0x50003, 2},
    {"%short", 0x50004, 3},
    {"%uint", 0x50005, 4},
    {"%unsignedInt", 0x50005, 4},
    {"%int", 0x50006, 5},
    {"%ulong", 0x50007, 6},
    {"%unsignedLong", 0x50007, 6},
    {"%long", 0x50008, 7},
    {"%string", 0x30009, 8},
    {"%boolean", 0x11000A, 9},
    {"%float", 0x9000B, 10},
    {"%double", 0x9000C, 11},
    {"%datetime", 0x5000D, 12},
    {"%dateTime", 0x5000D, 12},
    {"%duration", 0x5000E, 13},
    {"%any_uri", 0x3000F, 14},
    {"%anyURI", 0x3000F, 14},
    {"%hex_binary", 0x30010, 15},
    {"%hexBinary", 0x30010, 15},
    {"%ip_address", 0x30011, 101},
    {"%ipAddress", 0x30011, 101},
    {"%nsap_address", 0x30012, 102},
    {"%nsapAddress", 0x30012, 102},
    {"%enumeration", 0x30013, 103},
    {"%array", 0x810014, 106},
    {"%choice", 0x410015, 104},
    {"%sequence", 0x410016, 105},
    {"%mr_uri", 0x30017, 107},
    {"%coll_uri", 0x30018, 108},
    {"%bits", 0x410019, 109},
    {"%properties", 0x400100, -3},
    {"%nlist", 0x800102, -3},
    {"%vlist", 0x800103, -3},
    {"%nvlist", 0x800104, -3},
    {"%ntlist", 0x800110, -3},
    {"%config_ops", 0x800106, -3},
    {"%mr_meta_list", 0x800108, -3},
    {"%mr_meta", 0x400109, -3},
    {"%prop_meta_list", 0x80010A, -3},
    {"%prop_meta", 0x40010B, -3},
    {"%constraint_list", 0x80010C, -3},
    {"%constraint", 0x40010E, -3},
    {"%error", 0x400114, -3},
    {"%prop_errs", 0x400115, -3},
    {"%event", 0x400117, -3},
    {"%properties_list", 0x800105, -3},
    {"%null", 0x200000, -1},
    {"%vtable", 0x80010F, -3},
    {"%typedef_meta", 0x400118, -3},
    {"%dtree", 0x400119, -3},
    {"_add()", 0x1000001, -3},
    {"_sub()", 0x1000002, -3},
    {"_mult()", 0x1000003, -3},
    {"_div()", 0x1000004, -3},
    {"_mod()", 0x1000005, -3},
    {"_incr()", 0x1000006, -3},
    {"_decr()", 0x1000007, -3},
    {"_map()", 0x1000008, -3},
    {"_tostring()", 0x1000009, -3},
    {"_key()", 0x100000A, -3},
    {"_min()", 0x100000B, -3},
    {"_max()", 0x100000C, -3},
};

int32_t length_of(const std::string &text) {
    return static_cast<int32_t>(text.size());
}

bool is_one_of(const std::string &tag, std::initializer_list<const char *> tags) {
    for (const char *other : tags) {
        if (tag == other)
            return true;
    }
    return false;
}

TEST(JsonTypeTable, HasItsRowsInTheirOrderAndAnEnd) {
    const oru_json_type_info *info = oru_json_get_type_info("%ubyte", 6);
    for (const Row &row : kRows) {
        ASSERT_NE(info->tag, nullptr) << row.tag;
        EXPECT_STREQ(info->tag, row.tag);
        EXPECT_EQ(info->type_code, row.code) << row.tag;
        EXPECT_EQ(info->value_type_code, row.value_type) << row.tag;
        EXPECT_NE(info->deserialiser, nullptr) << row.tag;
        ++info;
    }
    EXPECT_EQ(info->tag, nullptr);
    EXPECT_EQ(std::size(kRows), 66u);
}

TEST(JsonTypeTable, ATagFindsTheFirstRowThatItBegins) {
    for (const Row &row : kRows) {
        std::string expected = row.tag;
        if (is_one_of(expected, {"%mr_meta", "%prop_meta", "%constraint"}))
            expected += "_list";
        const std::string tag = row.tag;
        EXPECT_EQ(oru_json_get_type_info(tag.data(), length_of(tag))->tag, expected);
        // The text may go on behind its length.
        EXPECT_EQ(oru_json_get_type_info((tag + "x").data(), length_of(tag))->tag, expected);
        EXPECT_EQ(oru_json_get_type_info((tag + "x").data(), length_of(tag) + 1), nullptr) << tag;
    }
    EXPECT_STREQ(oru_json_get_type_info("%p", 2)->tag, "%properties");
    EXPECT_STREQ(oru_json_get_type_info("%d", 2)->tag, "%double");
    EXPECT_STREQ(oru_json_get_type_info("%properties_", 12)->tag, "%properties_list");
    EXPECT_STREQ(oru_json_get_type_info("_m", 2)->tag, "_mult()");
    EXPECT_EQ(oru_json_get_type_info("%INT", 4), nullptr);
}

TEST(JsonTypeTable, ACodeFindsTheFirstOfItsRows) {
    for (const Row &row : kRows) {
        std::string expected = row.tag;
        for (const Row &other : kRows) {
            if (other.code == row.code) {
                expected = other.tag;
                break;
            }
        }
        EXPECT_EQ(oru_json_get_type_info_by_type_code(row.code)->tag, expected);
        if (row.value_type >= 0) {
            EXPECT_EQ(oru_json_get_type_info_by_value_type_code(row.value_type)->tag, expected);
        }
    }
    // Everything that is no value.
    EXPECT_STREQ(oru_json_get_type_info_by_value_type_code(-3)->tag, "%properties");
    for (const int64_t code : {0x0L, 0x10000L, 0x50000L, 0x100000DL, 0x800107L})
        EXPECT_EQ(oru_json_get_type_info_by_type_code(code), nullptr) << code;
    for (const int32_t type : {-2, 16, 100, 110})
        EXPECT_EQ(oru_json_get_type_info_by_value_type_code(type), nullptr) << type;
}

// ---- The check at the head of deserialisers ----

bool is_checked(const Row &row) {
    return !is_one_of(row.tag, {"%null", "%config_ops", "%vtable"});
}

TEST(JsonDeserialisers, NeedAContextAndAnElement) {
    for (const Row &row : kRows) {
        if (!is_checked(row))
            continue;
        const auto *info = oru_json_get_type_info_by_type_code(row.code);
        const TraceCapture capture(3);
        EXPECT_EQ(info->deserialiser(nullptr, nullptr), nullptr) << row.tag;
        const Context ctx = parsed("");
        EXPECT_EQ(info->deserialiser(ctx.get(), nullptr), nullptr) << row.tag;
        EXPECT_EQ(code_of(ctx), 3) << row.tag;
        EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "");
        EXPECT_EQ(capture.lines(), (std::vector<oru::test::Trace>{{3, "error: ctx_data null"},
                                                                  {3, "error: tmp_obj null"}}));
    }
}

// An element that was completed stays on the stack, where it can be given to another type's.
TEST(JsonDeserialisers, NeedAnElementOfTheirType) {
    const Context value = parsed(R"({"%int":1})");
    const Context props = parsed(R"({"%properties":{"a":1}})");
    const Context sum = parsed(R"j({"_add()":[1]})j");
    for (const Row &row : kRows) {
        if (!is_checked(row))
            continue;
        const bool is_value = (row.code & 0x10000) != 0;
        const bool is_expression = (row.code & 0x1000000) != 0;
        for (const Context *other : {&value, &props, &sum}) {
            if ((is_value && other == &value) || (is_expression && other == &sum) ||
                (row.code == 0x400100 && other == &props))
                continue;
            ORUDoJsonCtxData *ctx = other->get();
            ASSERT_NE(ctx->top, nullptr);
            const TraceCapture capture(3);
            const auto *info = oru_json_get_type_info_by_type_code(row.code);
            EXPECT_EQ(info->deserialiser(ctx, ctx->top), nullptr) << row.tag;
            EXPECT_EQ(code_of(*other), 5) << row.tag;
            EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "");
            EXPECT_EQ(capture.lines(),
                      (std::vector<oru::test::Trace>{{3, "error: not the expected type"}}));
        }
    }
}

TEST(JsonDeserialisers, NeedItems) {
    for (const Row &row : kRows) {
        const std::string tag = row.tag;
        if (is_one_of(tag, {"%mr_meta", "%prop_meta", "%constraint"}) || !is_checked(row))
            continue;
        const TraceCapture capture(3);
        const Context map = parsed("{\"" + tag + "\":{}}");
        EXPECT_EQ(map->completed_obj, nullptr) << tag;
        EXPECT_EQ(code_of(map), 4) << tag;
        EXPECT_STREQ(oru_do_error_get_msg(map->err), "");
        EXPECT_EQ(capture.lines(),
                  (std::vector<oru::test::Trace>{{3, "error: tmp_obj->val null"}}));
        // An array may be empty where values are its elements.
        const Context array = parsed("{\"" + tag + "\":[]}");
        const bool is_value = (row.code & 0x10000) != 0;
        EXPECT_EQ(array->completed_obj != nullptr, is_value) << tag;
        EXPECT_EQ(code_of(array), is_value ? 0 : 4) << tag;
    }
    // The single descriptions are reached through what is expected.
    for (const int64_t expected : {0x400109, 0x40010B, 0x40010E})
        EXPECT_EQ(code_of(parsed("{}", expected)), 4);
}

TEST(JsonDeserialisers, OfNullOperationsAndTablesTakeNoItems) {
    for (const char *text : {R"({"%null":{}})", R"({"%null":[]})", R"({"%null":1})",
                             R"({"%config_ops":{}})", R"({"%vtable":[]})"}) {
        const TraceCapture capture(3);
        const Context ctx = parsed(text);
        EXPECT_NE(ctx->completed_obj, nullptr) << text;
        EXPECT_EQ(code_of(ctx), 0) << text;
        EXPECT_TRUE(capture.lines().empty()) << text;
    }
    EXPECT_EQ(parsed(R"({"%vtable":{}})")->completed_obj, nullptr);  // the array makes the table
}

// What is left on the stack can be completed again, also when the parse is over, as long as its
// text is there.
TEST(JsonDeserialisers, GiveAnotherObjectForTheSameElement) {
    for (const std::string text :
         {R"({"%int":1})", R"({"%array":[{"%int":1},{"%string":"a"}]})",
          R"({"%sequence":{"a":{"%int":1}}})", R"({"%properties":{"a":{"%int":1}}})",
          R"({"%nlist":["a"]})", R"({"%nvlist":{"a":{"%int":1}}})", R"({"%dtree":{"name":"a"}})",
          R"({"%prop_errs":{"p":{"%error":{"msg":"m"}}}})",
          R"({"%event":{"name":"e","mr_uri":"/a","info":{"%properties":{"n":5}}}})"}) {
        const Context ctx = parsed(text);
        ASSERT_NE(ctx->completed_obj, nullptr) << text;
        const auto *info = oru_json_get_type_info_by_type_code(ctx->completed_type);
        void *again = info->deserialiser(ctx.get(), ctx->top);
        EXPECT_NE(again, nullptr) << text;
        EXPECT_NE(again, ctx->completed_obj) << text;
        oru_do_json_free_obj(ctx->completed_type, again);
        EXPECT_EQ(ctx->err, nullptr) << text;
    }
}

// ---- Objects by their types ----

constexpr const char *kOneOfEach[] = {
    R"({"%int":1})",
    R"({"%null":1})",
    R"j({"_add()":[1]})j",
    R"({"%properties":{"a":1}})",
    R"({"%nlist":["a"]})",
    R"({"%vlist":[1]})",
    R"({"%nvlist":{"a":1}})",
    R"({"%ntlist":{"a":{"%typedef_meta":{"simple_type":"int"}}}})",
    R"({"%config_ops":[]})",
    R"({"%mr_meta_list":[{"pkg_name":"p","mr_name":"M"}]})",
    R"({"%prop_meta_list":[{"prop_name":"p","type_name":"T","type_code":5}]})",
    R"({"%constraint_list":[{"constraint_str":"s"}]})",
    R"({"%error":{"msg":"m"}})",
    R"({"%prop_errs":{"p":{"%error":{"msg":"m"}}}})",
    R"({"%event":{"name":"e","mr_uri":"/a","info":{"%properties":{"n":5}}}})",
    R"({"%properties_list":[{"a":1}]})",
    R"({"%vtable":[[1]]})",
    R"({"%typedef_meta":{"simple_type":"int"}})",
    R"({"%dtree":{"name":"a"}})",
};

void expect_released(const char *text, int64_t expected) {
    const uint64_t blocks = poolheap_live_blocks();
    const uint64_t elements = chunk_live_elements();
    Context ctx = parsed(text, expected);
    ASSERT_NE(ctx->completed_obj, nullptr) << text;
    void *object = std::exchange(ctx->completed_obj, nullptr);
    oru_do_json_free_obj(ctx->completed_type, object);
    ctx.reset();
    EXPECT_EQ(poolheap_live_blocks(), blocks) << text;
    EXPECT_EQ(chunk_live_elements(), elements) << text;
}

TEST(JsonObjectTypes, AnObjectIsReleasedByItsType) {
    for (const char *text : kOneOfEach)
        expect_released(text, 0);
    expect_released(R"({"pkg_name":"p","mr_name":"M"})", 0x400109);
    expect_released(R"({"prop_name":"p","type_name":"T","type_code":5})", 0x40010B);
    expect_released(R"({"constraint_str":"s"})", 0x40010E);
}

TEST(JsonObjectTypes, AnUnclaimedObjectGoesWithItsContext) {
    for (const char *text : kOneOfEach) {
        const uint64_t blocks = poolheap_live_blocks();
        const uint64_t elements = chunk_live_elements();
        EXPECT_NE(parsed(text)->completed_obj, nullptr) << text;
        EXPECT_EQ(poolheap_live_blocks(), blocks) << text;
        EXPECT_EQ(chunk_live_elements(), elements) << text;
    }
}

TEST(JsonObjectTypes, EachOperationTakesItsOwnAndGivesUpAllOthers) {
    using Read = void *(*)(const char *, ORUDoError **);
#define READ(name)                                                  \
    [](const char *text, ORUDoError **errp) -> void * {             \
        const auto size = static_cast<int32_t>(std::strlen(text));  \
        auto *object = oru_do_##name##_from_json(text, size, errp); \
        oru_do_##name##_deref(object);                              \
        return object;                                              \
    }
    const struct {
        Read read;
        const char *takes;
    } operations[] = {
        {READ(value), kOneOfEach[0]},
        {READ(properties), kOneOfEach[3]},
        {READ(nlist), kOneOfEach[4]},
        {READ(vlist), kOneOfEach[5]},
        {READ(nvlist), kOneOfEach[6]},
        {READ(ntlist), kOneOfEach[7]},
        {READ(config_ops), kOneOfEach[8]},
        {READ(mr_meta_list), kOneOfEach[9]},
        {READ(prop_meta_list), kOneOfEach[10]},
        {READ(constraint_list), kOneOfEach[11]},
        {READ(error), kOneOfEach[12]},
        {READ(prop_errs), kOneOfEach[13]},
        {READ(event), kOneOfEach[14]},
        {READ(properties_list), kOneOfEach[15]},
        {READ(vtable), kOneOfEach[16]},
        {READ(typedef_meta), kOneOfEach[17]},
        {READ(dtree), kOneOfEach[18]},
        {READ(mr_meta), nullptr},
        {READ(prop_meta), nullptr},
        {READ(constraint), nullptr},
    };
#undef READ
    for (const auto &operation : operations) {
        for (const char *text : kOneOfEach) {
            // A null is a value too; what an expression gives is not taken for one.
            const bool takes = text == operation.takes ||
                               (operation.takes == kOneOfEach[0] && text == kOneOfEach[1]);
            ORUDoError *err = nullptr;
            EXPECT_EQ(operation.read(text, &err) != nullptr, takes) << text;
            EXPECT_EQ(err, nullptr) << text;
            EXPECT_EQ(operation.read(text, nullptr) != nullptr, takes) << text;
        }
        ORUDoError *err = nullptr;
        EXPECT_EQ(operation.read(R"({"%nope":1})", &err), nullptr);
        const oru::test::Error owned(err);
        ASSERT_NE(err, nullptr);
        EXPECT_EQ(oru_do_error_get_code(err), 8);
        EXPECT_EQ(operation.read(R"({"%nope":1})", nullptr), nullptr);
    }
}

}  // namespace
