// Running out of memory while objects of every kind are read and written.
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <string>

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
#include "tests/unit/json/support.h"

namespace {

using oru::test::code_of;
using oru::test::Context;
using oru::test::Error;
using oru::test::parsed;
using oru::test::size_of;
using oru::test::Value;

// Writes an object of a JSON type.
int32_t write(int64_t type, void *object, ORUDoStrbuf *buf, uint32_t options) {
    switch (type) {
#define PLAIN(code, Kind, name) \
    case code:                  \
        return oru_do_##name##_to_json(static_cast<ORUDo##Kind *>(object), buf);
#define WITH_OPTIONS(code, Kind, name) \
    case code:                         \
        return oru_do_##name##_to_json_opt(static_cast<ORUDo##Kind *>(object), buf, options);
        WITH_OPTIONS(0x400100, Properties, properties)
        WITH_OPTIONS(0x800105, PropertiesList, properties_list)
        WITH_OPTIONS(0x800104, Nvlist, nvlist)
        WITH_OPTIONS(0x80010F, Vtable, vtable)
        WITH_OPTIONS(0x800106, ConfigOps, config_ops)
        WITH_OPTIONS(0x400117, Event, event)
        PLAIN(0x800102, Nlist, nlist)
        PLAIN(0x800110, Ntlist, ntlist)
        PLAIN(0x800108, MrMetaList, mr_meta_list)
        PLAIN(0x400109, MrMeta, mr_meta)
        PLAIN(0x80010A, PropMetaList, prop_meta_list)
        PLAIN(0x40010B, PropMeta, prop_meta)
        PLAIN(0x80010C, ConstraintList, constraint_list)
        PLAIN(0x40010E, Constraint, constraint)
        PLAIN(0x400114, Error, error)
        PLAIN(0x400115, PropErrs, prop_errs)
        PLAIN(0x400118, TypedefMeta, typedef_meta)
        PLAIN(0x400119, Dtree, dtree)
#undef PLAIN
#undef WITH_OPTIONS
        case 0x800103:
            return oru_do_vlist_to_json_opt(static_cast<ORUDoVlist *>(object), buf, options | 2,
                                            nullptr);
        default:
            return oru_do_value_to_json_opt(static_cast<ORUDoValue *>(object), buf, options);
    }
}

std::string completed(const Context &ctx, uint32_t options = 0) {
    return oru::test::written([&](ORUDoStrbuf *buf) {
        return write(ctx->completed_type, ctx->completed_obj, buf, options);
    });
}

// Scalars of every type, with and without the name of a typedef, and all that holds values.
const std::string kScalars =
    R"({"%ubyte":1},{"%byte":-1},{"%ushort":2},{"%short":-2},{"%uint":3},{"%int":-3},{"%ulong":4},)"
    R"({"%long":-4},{"%string":"text"},{"%string":"a text that is long enough to leave its)"
    R"( record and the smaller of the pools for it \n","%typedef":"T"},{"%boolean":true},)"
    R"({"%float":0.5},{"%double":1.5},{"%datetime":5},{"%duration":6},{"%any_uri":"/a"},)"
    R"({"%hex_binary":"AB01"},{"%ip_address":"7F000001"},{"%nsap_address":"4900"},)"
    R"({"%enumeration":"up","%typedef":"E"},{"%mr_uri":"/m"},{"%coll_uri":"/c?de"},null,{"%null":1})";

const std::string kHolders =
    R"j({"%choice":{"a":{"%int":1}}},{"%sequence":{"a\n":{"%string":"b\n"},"c":null}},)j"
    R"j({"%array":[{"%int":1},{"%string":"x"}]},{"%int":[1,2],"%typedef":"T"},)j"
    R"j({"%bits":[{"%enumeration":"b"}]},{"%vlist":[1,[2,3]]},)j"
    R"j({"_add()":[1,{"_mult()":[2,3]}]},{"_tostring()":["x",1]},)j"
    R"j({"_key()":[{"%mr_uri":"/a;k=1"}]},{"_map()":["x","x",1]},{"_max()":[1,2]})j";

const std::string kError =
    R"({"%error":{"code":1,"msg":"m\n","namespace":"n\n","cause":{"%error":{"code":2,"msg":"c"}},)"
    R"("prop_errs":{"%prop_errs":{"p":{"%error":{"code":3,"msg":"q"}}}}}})";

const std::string kType =
    R"j({"%typedef_meta":{"name":"N","simple_type":"int","constraint_list":)j"
    R"j({"%constraint_list":[{"condition":"a = 1","constraint_str":"range(1..5)"}]}}})j";

const std::string kMembers = R"({"%ntlist":{"a":)" + kType + "}}";

struct Kind {
    int64_t expected;
    std::string text;
};

const Kind kKinds[] = {
    {0, R"({"%vlist":[)" + kScalars + "]}"},
    {0, R"({"%vlist":[)" + kHolders + "]}"},
    {0, R"({"%nvlist":{"a":{"%int":1},"b\n":"x\n","c":{"%sequence":{"d":1}}}})"},
    {0, R"({"%properties":{"a":{"%int":[1,2],"%typedef":"T"},"b\n":"c\n","d":{"%mr_uri":"/x"}}})"},
    {0x400100, R"({"a":1,"b":"x","c":2.5,"d":true,"e":null})"},
    {0, R"({"%properties_list":[{"a":1},{"%properties":{"b":"x"}}]})"},
    {0, R"({"%nlist":["a","b\n"]})"},
    {0, R"({"%vtable":[[1,"a\n"],[2,null],{"%int":[3]}]})"},
    {0, R"({"%config_ops":[{"child_ref_name":"c","mr_name":"m","lib_mr_name":"l","mr_uri":"/a",)"
        R"("op_code":2,"props":{"%properties":{"n":5}}},{"mr_uri":"/b","op_code":1,)"
        R"("props":{"%properties":{"n":6}}}]})"},
    {0, kError},
    {0, R"({"%prop_errs":{"p":)" + kError + R"(,"q":{"%error":{"msg":"x"}}}})"},
    {0, R"({"%event":{"name":"e","mr_uri":"/a","time":1,"sev":2,"info":{"%properties":{"n":5}}}})"},
    {0, R"({"%mr_meta_list":[{"pkg_name":"p","pkg_version":"1","mr_name":"M","max_access":15}]})"},
    {0x400109, R"({"pkg_name":"p","pkg_version":"1","mr_name":"M","max_access":15})"},
    {0, R"({"%prop_meta_list":[{"prop_name":"p","type_name":"T","type_code":5}]})"},
    {0x40010B, R"({"prop_name":"p","type_name":"T","type_code":5})"},
    {0, R"j({"%constraint_list":[{"condition":"a = 1","constraint_str":"range(1..5)"}]})j"},
    {0x40010E, R"j({"condition":"a = 1","constraint_str":"values(\"a\")"})j"},
    {0, kType},
    {0, R"({"%typedef_meta":{"name":"N","enum":{"%nvlist":{"up":{"%int":1}}}}})"},
    {0, R"({"%typedef_meta":{"name":"N","sequence":)" + kMembers + "}}"},
    {0, R"({"%typedef_meta":{"choice":)" + kMembers + "}}"},
    {0, kMembers},
    {0, R"({"%dtree":{"name":"r\n","mr_uri":"/u","err":)" + kError +
            R"(,"props":{"%properties":{"p":1}},"children":{"%dtree":[{"name":"a","children":)"
            R"({"%dtree":[{"name":"b"}]}},{"name":"c"}]}}})"},
};

// Every kind in one text, with faults among them.
std::string all_kinds() {
    std::string text = R"({"%vlist":[{"%nope":1},{"%n\u006fpe":[1]},{"%int":{}})";
    for (const Kind &kind : kKinds)
        text += "," + kind.text;
    return text + "]}";
}

// ---- Reading ----

// One failing allocation after the other: the object is whole, or an error tells of it.
TEST(JsonMemory, WhatIsNotReadIsTold) {
    for (const Kind &kind : kKinds) {
        const Context good = parsed(kind.text, kind.expected);
        ASSERT_NE(good->completed_obj, nullptr) << kind.text;
        ASSERT_EQ(good->err, nullptr) << kind.text;
        const std::string whole = completed(good);
        uint64_t nth = 1;
        for (bool met = true; met; ++nth) {
            ASSERT_LT(nth, 2000u);
            const uint64_t blocks = poolheap_live_blocks();
            const uint64_t elements = chunk_live_elements();
            poolheap_fail_nth(nth, 0);
            Context ctx = parsed(kind.text, kind.expected);
            poolheap_fail_off();
            met = poolheap_fail_hits() > 0;
            if (ctx != nullptr && ctx->err == nullptr) {
                ASSERT_NE(ctx->completed_obj, nullptr) << kind.text << " at " << nth;
                EXPECT_EQ(completed(ctx), whole) << "at " << nth;
            }
            ctx.reset();
            EXPECT_EQ(poolheap_live_blocks(), blocks) << kind.text << " at " << nth;
            EXPECT_EQ(chunk_live_elements(), elements) << kind.text << " at " << nth;
        }
        EXPECT_GT(nth, 10u) << kind.text;
    }
}

// Every kind with faults among them, each allocation failing alone and with all behind it.
TEST(JsonMemory, NothingBreaksAndNothingStays) {
    const std::string text = all_kinds();
    for (const int32_t for_good : {0, 1}) {
        uint64_t nth = 1;
        for (bool met = true; met; ++nth) {
            ASSERT_LT(nth, 5000u);
            const uint64_t blocks = poolheap_live_blocks();
            const uint64_t elements = chunk_live_elements();
            poolheap_fail_nth(nth, for_good);
            Context ctx = parsed(text);
            poolheap_fail_off();
            met = poolheap_fail_hits() > 0;
            EXPECT_EQ(ctx == nullptr, nth == 1);
            EXPECT_TRUE(ctx == nullptr || ctx->err != nullptr || for_good != 0) << nth;
            ctx.reset();
            EXPECT_EQ(poolheap_live_blocks(), blocks) << nth;
            EXPECT_EQ(chunk_live_elements(), elements) << nth;
        }
        EXPECT_GT(nth, 300u);
    }
}

TEST(JsonMemory, AParserWithoutMemoryIsCodeOne) {
    for (const char *text : {R"("a")", R"({"%string":"a\n"})", "{x", "null"}) {
        bool seen = false;
        uint64_t nth = 1;
        for (bool met = true; met; ++nth) {
            poolheap_fail_nth(nth, 0);
            const Context ctx = parsed(text);
            poolheap_fail_off();
            met = poolheap_fail_hits() > 0;
            // The first call is the context's, the next ones are the parser's.
            if (nth == 2) {
                EXPECT_EQ(code_of(ctx), 1) << text;
                EXPECT_STREQ(oru_do_error_get_msg(ctx->err), "");
                EXPECT_EQ(ctx->completed_obj, nullptr);
                EXPECT_EQ(ctx->top, nullptr);
                seen = true;
            }
        }
        EXPECT_TRUE(seen);
    }
    // The words of a fault are yajl's too.
    uint64_t calls = 0;
    poolheap_fail_nth(0, 0);
    EXPECT_EQ(code_of(parsed("{x")), 7);
    calls = poolheap_fail_calls();
    poolheap_fail_off();
    int told = 0;
    for (uint64_t nth = 2; nth <= calls; ++nth) {
        poolheap_fail_nth(nth, 0);
        const Context ctx = parsed("{x");
        poolheap_fail_off();
        told += code_of(ctx) == 1 ? 1 : 0;
    }
    EXPECT_GT(told, 3);
}

TEST(JsonMemory, OperationsThatReadGiveTheCode) {
    const std::string text = R"({"%properties":{"a":"x\n"}})";
    int told = 0;
    uint64_t nth = 1;
    for (bool met = true; met; ++nth) {
        ORUDoError *err = nullptr;
        poolheap_fail_nth(nth, 0);
        ORUDoProperties *props = oru_do_properties_from_json(text.data(), size_of(text), &err);
        poolheap_fail_off();
        met = poolheap_fail_hits() > 0;
        const Error owned(err);
        if (props == nullptr && nth > 1) {
            ASSERT_NE(err, nullptr) << nth;
            EXPECT_EQ(oru_do_error_get_code(err), 1);
            EXPECT_STREQ(oru_do_error_get_msg(err), "");
            ++told;
        }
        oru_do_properties_deref(props);
    }
    EXPECT_GT(told, 5);
}

// ---- Writing ----

// A writer under a failing allocation: its buffer tells it, or an escaped text is left out behind
// its key, or a resource stays open where its list should stand.
void expect_told(const std::string &made, const std::string &whole) {
    size_t front = 0;
    while (front < made.size() && made[front] == whole[front])
        ++front;
    size_t back = 0;
    while (back < made.size() - front &&
           made[made.size() - 1 - back] == whole[whole.size() - 1 - back])
        ++back;
    EXPECT_EQ(front + back, made.size()) << made << "\nof\n" << whole;
}

TEST(JsonMemory, WhatIsNotWrittenIsToldOrLeftOut) {
    for (const Kind &kind : kKinds) {
        const Context ctx = parsed(kind.text, kind.expected);
        ASSERT_NE(ctx->completed_obj, nullptr) << kind.text;
        for (const uint32_t options : {0u, 1u}) {
            const std::string whole = completed(ctx, options);
            uint64_t nth = 1;
            for (bool met = true; met; ++nth) {
                ASSERT_LT(nth, 2000u);
                const uint64_t blocks = poolheap_live_blocks();
                poolheap_fail_nth(nth, 0);
                ORUDoStrbuf *buf = oru_do_strbuf_new();
                if (buf != nullptr) {
                    EXPECT_EQ(write(ctx->completed_type, ctx->completed_obj, buf, options), 0);
                    if (oru_do_strbuf_get_err(buf) == 0)
                        expect_told(oru_do_strbuf_to_string(buf), whole);
                }
                poolheap_fail_off();
                met = poolheap_fail_hits() > 0;
                oru_do_strbuf_deref(buf);
                EXPECT_EQ(poolheap_live_blocks(), blocks) << kind.text << " at " << nth;
            }
            EXPECT_EQ(completed(ctx, options), whole);
        }
    }
}

TEST(JsonMemory, WritingGoesOnWhenMemoryStaysAway) {
    for (const Kind &kind : kKinds) {
        const Context ctx = parsed(kind.text, kind.expected);
        for (uint64_t nth : {1u, 2u, 3u, 4u, 5u, 9u, 20u}) {
            const uint64_t blocks = poolheap_live_blocks();
            poolheap_fail_nth(nth, 1);
            ORUDoStrbuf *buf = oru_do_strbuf_new();
            if (buf != nullptr) {
                EXPECT_EQ(write(ctx->completed_type, ctx->completed_obj, buf, 0), 0);
            }
            poolheap_fail_off();
            oru_do_strbuf_deref(buf);
            EXPECT_EQ(poolheap_live_blocks(), blocks) << kind.text << " at " << nth;
        }
    }
}

// The key is there already.
TEST(JsonMemory, ATextWithoutAGeneratorLeavesItsKey) {
    const Value value(oru_do_value_new_string("a\n"));
    oru_do_value_set_typedef_name(value.get(), "T\n");
    const auto written_without = [&](uint64_t nth, int32_t for_good) {
        ORUDoStrbuf *buf = oru_do_strbuf_new();
        poolheap_fail_nth(nth, for_good);
        EXPECT_EQ(oru_do_value_to_json(value.get(), buf), 0);
        poolheap_fail_off();
        std::string text = oru_do_strbuf_to_string(buf);
        EXPECT_EQ(oru_do_strbuf_get_err(buf), 0);
        oru_do_strbuf_deref(buf);
        return text;
    };
    EXPECT_EQ(written_without(1, 0), R"({"%string":,"%typedef":"T\n"})");
    EXPECT_EQ(written_without(1, 1), R"({"%string":,"%typedef":})");
}

}  // namespace
