// Operations and events as texts.
#include <gtest/gtest.h>

#include <string>

#include "oru/config_op.h"
#include "oru/event.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/json/support.h"

namespace {

using oru::test::Context;
using oru::test::Error;
using oru::test::Owned;
using oru::test::parsed;
using oru::test::size_of;
using oru::test::written;
using Event = Owned<ORUDoEvent, oru_do_event_deref>;
using Name = Owned<ORUDoName, oru_do_name_deref>;
using Ops = Owned<ORUDoConfigOps, oru_do_config_ops_deref>;
using Properties = Owned<ORUDoProperties, oru_do_properties_deref>;
using Uri = Owned<ORUDoUri, oru_do_uri_deref>;

Properties one_number() {
    Properties props(oru_do_properties_new());
    oru_do_properties_set_int(props.get(), "n", 5);
    return props;
}

std::string json_of(ORUDoConfigOps *ops, uint32_t options = 0) {
    return written([=](ORUDoStrbuf *b) { return oru_do_config_ops_to_json_opt(ops, b, options); });
}

std::string json_of(ORUDoEvent *event, uint32_t options = 0) {
    return written([=](ORUDoStrbuf *b) { return oru_do_event_to_json_opt(event, b, options); });
}

Ops ops_from(const std::string &text, ORUDoError **errp = nullptr) {
    return Ops(oru_do_config_ops_from_json(text.data(), size_of(text), errp));
}

Event event_from(const std::string &text, ORUDoError **errp = nullptr) {
    return Event(oru_do_event_from_json(text.data(), size_of(text), errp));
}

// What operations are read, written again.
std::string read_back(const std::string &text) {
    const Ops ops = ops_from(text);
    return ops != nullptr ? json_of(ops.get()) : "none";
}

// ---- Writing ----

TEST(ConfigOpsJson, WritesTheirPartsInOrder) {
    const Ops ops(oru_do_config_ops_new());
    EXPECT_EQ(json_of(ops.get()), R"({"%config_ops":[]})");
    oru_do_config_ops_add(ops.get(), 2, Uri(oru_do_uri_new("/a;k=1")).get(), one_number().get(),
                          Name(oru_do_name_new("c")).get(), Name(oru_do_name_new("p:1/M")).get(),
                          Name(oru_do_name_new("l:1/M")).get());
    oru_do_config_op_set_err(oru_do_config_ops_get_op(ops.get(), 0), oru_do_error_new(7, "w"));
    EXPECT_EQ(json_of(ops.get()),
              R"({"%config_ops":[{"mr_uri":"/a;k=1","op_code":2,)"
              R"("props":{"%properties":{"n":{"%int":5}}},"child_ref_name":"c",)"
              R"("mr_name":"p:1/M","lib_mr_name":"l:1/M",)"
              R"("err":{"%error":{"code":7,"msg":"w"}}}]})");
    EXPECT_NE(json_of(ops.get(), ORU_JSON_OPT_COMPACT).find(R"(,"props":{"n":5},)"),
              std::string::npos);
}

TEST(ConfigOpsJson, LeavesOutWhatIsMissing) {
    const Ops ops(oru_do_config_ops_new());
    for (int32_t code : {-1, 3})
        oru_do_config_ops_add(ops.get(), code, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(json_of(ops.get()), R"({"%config_ops":[{"op_code":-1},{"op_code":3}]})");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_config_ops_to_json(ops.get(), b); }),
              json_of(ops.get()));
}

TEST(ConfigOpsJson, TextsStandAsTheyAre) {
    const Ops ops(oru_do_config_ops_new());
    oru_do_config_ops_add(ops.get(), 1, nullptr, nullptr, Name(oru_do_name_new("a\"b")).get(),
                          nullptr, nullptr);
    EXPECT_EQ(json_of(ops.get()), R"({"%config_ops":[{"op_code":1,"child_ref_name":"a"b"}]})");
}

TEST(EventJson, WritesItsPartsInOrder) {
    const Event event(oru_do_event_new_2(
        Name(oru_do_name_new("p")).get(), "1.0", Name(oru_do_name_new("e")).get(),
        Uri(oru_do_uri_new("/a")).get(), -17, -3, one_number().get()));
    EXPECT_EQ(json_of(event.get()), R"({"%event":{"name":"e","mr_uri":"/a","time":-17,"sev":-3,)"
                                    R"("info":{"%properties":{"n":{"%int":5}}}}})");
    EXPECT_EQ(json_of(event.get(), ORU_JSON_OPT_COMPACT),
              R"({"%event":{"name":"e","mr_uri":"/a","time":-17,"sev":-3,"info":{"n":5}}})");
    EXPECT_EQ(written([&](ORUDoStrbuf *b) { return oru_do_event_to_json(event.get(), b); }),
              json_of(event.get()));
}

TEST(EventJson, LeavesOutWhatIsMissing) {
    const Event event(oru_do_event_new(Name(oru_do_name_new("e")).get(), nullptr, 0, 0, nullptr));
    EXPECT_EQ(json_of(event.get()), R"({"%event":{"name":"e","time":0,"sev":0}})");
}

// ---- Reading ----

// In the order of the writer the names come behind the properties, and are lost.
TEST(ConfigOpsJson, AnOperationIsMadeAtItsProperties) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"mr_uri":"/a","op_code":2,)"
                        R"("props":{"%properties":{"n":5}},"child_ref_name":"c",)"
                        R"("mr_name":"p:1/M","lib_mr_name":"l:1/M",)"
                        R"("err":{"%error":{"code":7,"msg":"w"}}}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":2,)"
              R"("props":{"%properties":{"n":{"%int":5}}}}]})");
}

TEST(ConfigOpsJson, NamesInFrontOfThePropertiesAreKept) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"child_ref_name":"c","mr_name":"m",)"
                        R"("lib_mr_name":"l","mr_uri":"/a","op_code":2,)"
                        R"("props":{"%properties":{"n":5}}}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":2,)"
              R"("props":{"%properties":{"n":{"%int":5}}},"child_ref_name":"c",)"
              R"("mr_name":"m","lib_mr_name":"l"}]})");
}

// Another URI makes another operation, with the code and the properties that are there.
TEST(ConfigOpsJson, EveryUriMakesAnOperation) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"props":{"%properties":{"n":5}},"mr_name":"m",)"
                        R"("mr_uri":"/a","op_code":2,"mr_uri":"/b"}]})"),
              R"({"%config_ops":[)"
              R"({"mr_uri":"/a","op_code":-1,"props":{"%properties":{"n":{"%int":5}}},)"
              R"("mr_name":"m"},)"
              R"({"mr_uri":"/b","op_code":2,"props":{"%properties":{"n":{"%int":5}}}}]})");
}

TEST(ConfigOpsJson, WithoutACodeItIsMinusOne) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"mr_uri":"/a","props":{"%properties":{"n":5}}}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":-1,)"
              R"("props":{"%properties":{"n":{"%int":5}}}}]})");
}

TEST(ConfigOpsJson, CodeZeroAndMissingPropertiesMakeNone) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"mr_uri":"/a","op_code":0,)"
                        R"("props":{"%properties":{"n":5}}}]})"),
              R"({"%config_ops":[]})");
    EXPECT_EQ(read_back(R"({"%config_ops":[{"mr_uri":"/a","op_code":2}]})"),
              R"({"%config_ops":[]})");
    EXPECT_EQ(read_back(R"({"%config_ops":[{"op_code":2,"props":{"%properties":{"n":5}}}]})"),
              R"({"%config_ops":[]})");
}

TEST(ConfigOpsJson, KeysOfAnotherTypeAreSkipped) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"op_code":"2","mr_uri":1,"mr_uri":"/a",)"
                        R"("props":{"%nlist":["x"]},"props":{"%properties":{"n":5}}}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":-1,)"
              R"("props":{"%properties":{"n":{"%int":5}}}}]})");
}

TEST(ConfigOpsJson, TheBeginningOfAKeyWillDo) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"c":"c","op":2,"l":"l","m":"/a",)"
                        R"("p":{"%properties":{"n":5}}}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":2,)"
              R"("props":{"%properties":{"n":{"%int":5}}},"child_ref_name":"c",)"
              R"("lib_mr_name":"l"}]})");
}

TEST(ConfigOpsJson, SetsWithoutOperationsAreEmpty) {
    EXPECT_EQ(read_back(R"({"%config_ops":[]})"), R"({"%config_ops":[]})");
    EXPECT_EQ(read_back(R"({"%config_ops":{}})"), R"({"%config_ops":[]})");
    EXPECT_EQ(read_back(R"({"%config_ops":[1,"x",{"%int":1}]})"), R"({"%config_ops":[]})");
    EXPECT_EQ(read_back(R"({"op_code":1})"), R"({"%config_ops":[]})");
}

// A list within a set is no row of a table.
TEST(ConfigOpsJson, OtherObjectsWithinASetAreLeftOut) {
    const char *const kOperation = R"({"mr_uri":"/a","props":{"%properties":{"n":5}}})";
    EXPECT_EQ(read_back(std::string(R"({"%config_ops":[)") + kOperation +
                        R"(,{"%vlist":[1]},{"%config_ops":[)" + kOperation + "]}]}"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":-1,)"
              R"("props":{"%properties":{"n":{"%int":5}}}}]})");
}

TEST(ConfigOpsJson, ManyOperationsTakeTimeThatFollowsTheirNumber) {
    constexpr int32_t kMany = 100000;
    std::string text = R"({"%config_ops":[)";
    for (int32_t i = 0; i < kMany; ++i)
        text += std::string(i > 0 ? "," : "") +
                R"({"mr_uri":"/a","op_code":1,"props":{"%properties":{"n":5}}})";
    const Ops ops = ops_from(text + "]}");
    EXPECT_EQ(oru_do_config_ops_get_len(ops.get()), kMany);
}

TEST(ConfigOpsJson, AnotherTypeIsNoSet) {
    ORUDoError *error = nullptr;
    EXPECT_EQ(ops_from(R"({"%nlist":["a"]})", &error), nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(ops_from("{", &error), nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(ops_from("}", &error), nullptr);
    EXPECT_EQ(oru_do_error_get_code(Error(error).get()), ORU_JSON_ERR_PARSE);
}

TEST(EventJson, ReadsWhatIsWritten) {
    const std::string text = R"({"%event":{"name":"e","mr_uri":"/a","time":-17,"sev":-3,)"
                             R"("info":{"%properties":{"n":{"%int":5}}}}})";
    const Event event = event_from(text);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(json_of(event.get()), text);
    EXPECT_EQ(oru_do_event_get_pkg_name(event.get()), nullptr);
}

TEST(EventJson, TimeAndSeverityMayBeMissing) {
    const Event event =
        event_from(R"({"%event":{"info":{"%properties":{"n":5}},"mr_uri":"/a","name":"e"}})");
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(oru_do_event_get_event_time(event.get()), 0);
    EXPECT_EQ(oru_do_event_get_severity(event.get()), 0);
}

TEST(EventJson, NameUriAndInfoAreNeeded) {
    EXPECT_EQ(event_from(R"({"%event":{"mr_uri":"/a","info":{"%properties":{"n":5}}}})"), nullptr);
    EXPECT_EQ(event_from(R"({"%event":{"name":"e","info":{"%properties":{"n":5}}}})"), nullptr);
    EXPECT_EQ(event_from(R"({"%event":{"name":"e","mr_uri":"/a"}})"), nullptr);
    EXPECT_EQ(event_from(R"({"%event":{"name":1,"mr_uri":"/a","info":{"%properties":{"n":5}}}})"),
              nullptr);
    const Context empty = parsed(R"({"%event":{}})");
    EXPECT_EQ(empty->completed_obj, nullptr);
    EXPECT_EQ(oru::test::code_of(empty), ORU_JSON_ERR_NO_ITEMS);
}

TEST(EventJson, TheFirstOfEqualKeysWins) {
    const Event event = event_from(
        R"({"%event":{"name":"e","name":"f","mr_uri":"/a","info":{"%properties":{"n":5}}}})");
    EXPECT_STREQ(oru_do_name_get_strname(oru_do_event_get_name(event.get())), "e");
}

TEST(EventJson, TheBeginningOfAKeyWillDo) {
    const Event event = event_from(
        R"({"n":"e","m":"/a","t":9223372036854775807,"s":4294967298,"i":{"%properties":{"n":5}}})");
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(json_of(event.get()),
              R"({"%event":{"name":"e","mr_uri":"/a","time":9223372036854775807,"sev":2,)"
              R"("info":{"%properties":{"n":{"%int":5}}}}})");
}

TEST(EventJson, KeysOfAnotherTypeAreSkipped) {
    const Event event = event_from(
        R"({"name":1,"name":"e","mr_uri":{"%mr_uri":"/b"},"mr_uri":"/a","time":"1","time":1.5,)"
        R"("sev":null,"info":{"n":1},"info":{"%properties":{"n":5}},"info":{"%properties":{"m":6}}})");
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(json_of(event.get()), R"({"%event":{"name":"e","mr_uri":"/a","time":0,"sev":0,)"
                                    R"("info":{"%properties":{"n":{"%int":5}}}}})");
}

TEST(EventJson, TextsStandAsTheyAre) {
    const Event event(oru_do_event_new(Name(oru_do_name_new("a\"b")).get(),
                                       Uri(oru_do_uri_new("/\"u")).get(), 1, 2, nullptr));
    EXPECT_EQ(json_of(event.get()), R"({"%event":{"name":"a"b","mr_uri":"/"u","time":1,"sev":2}})");
}

// The code counts as it is when the operation is whole, which the properties make it mostly.
TEST(ConfigOpsJson, MembersBehindTheOperationAreForTheNext) {
    const std::string props = R"("props":{"%properties":{"n":5}})";
    const std::string made = R"("props":{"%properties":{"n":{"%int":5}}})";
    EXPECT_EQ(read_back(R"({"%config_ops":[{"mr_uri":"/a",)" + props + R"(,"op_code":2}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":-1,)" + made + "}]}");
    EXPECT_EQ(
        read_back(R"({"%config_ops":[{"op_code":0,"mr_uri":"/a",)" + props + R"(,"op_code":3}]})"),
        R"({"%config_ops":[{"mr_uri":"/a","op_code":3,)" + made + "}]}");
    EXPECT_EQ(read_back(R"({"%config_ops":[{"op_code":1,"mr_uri":"/a",)" + props +
                        R"(,"mr_name":"m","mr_uri":"/b","lib_mr_name":"l"}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":1,)" + made +
                  R"(},{"mr_uri":"/b","op_code":1,)" + made + R"(,"mr_name":"m"}]})");
    // Each object of the array begins anew.
    EXPECT_EQ(read_back(R"({"%config_ops":[{"op_code":4,)" + props + R"(,"mr_name":"m"},)" +
                        R"({"mr_uri":"/b",)" + props + "}]}"),
              R"({"%config_ops":[{"mr_uri":"/b","op_code":-1,)" + made + "}]}");
}

TEST(ConfigOpsJson, TheLastNameAndThePropertiesOfTheLastKeyCount) {
    EXPECT_EQ(read_back(R"({"%config_ops":[{"op_code":1,"op_code":4294967298,"mr_name":"m",)"
                        R"("mr_name":"n","props":{"%properties":{"a":1}},)"
                        R"("props":{"%properties":{"b":2}},"mr_uri":"/a"}]})"),
              R"({"%config_ops":[{"mr_uri":"/a","op_code":2,)"
              R"("props":{"%properties":{"b":{"%int":2}}},"mr_name":"n"}]})");
}

TEST(ConfigOpsJson, OptionsGoToTheProperties) {
    const Ops ops(oru_do_config_ops_new());
    const Properties props(oru_do_properties_new());
    ORUDoValue *secret = oru_do_value_new_string("s");
    oru_do_value_set_typedef_name(secret, "PasswordString");
    oru_do_properties_set_value(props.get(), "p", secret);
    oru_do_value_deref(secret);
    oru_do_config_ops_add(ops.get(), 1, nullptr, props.get(), nullptr, nullptr, nullptr);
    EXPECT_EQ(json_of(ops.get(), ORU_JSON_OPT_HIDE_PASSWORDS),
              R"({"%config_ops":[{"op_code":1,"props":{"%properties":)"
              R"({"p":{"%string":"<removed>","%typedef":"PasswordString"}}}}]})");
    EXPECT_EQ(json_of(ops.get(), ORU_JSON_OPT_HIDE_PASSWORDS | ORU_JSON_OPT_COMPACT),
              R"({"%config_ops":[{"op_code":1,"props":{"p":"<removed>"}}]})");
}

TEST(ConfigJsonMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            const std::string ops =
                R"({"%config_ops":[{"child_ref_name":"c","mr_name":"m","lib_mr_name":"l",)"
                R"("mr_uri":"/a","op_code":2,"props":{"%properties":{"n":5}}}]})";
            const std::string event =
                R"({"%event":{"name":"e","mr_uri":"/a","info":{"%properties":{"n":5}}}})";
            for (const std::string &text : {ops, event}) {
                const Context ctx(oru_do_json_parse(text.data(), size_of(text), 0));
                EXPECT_TRUE(ctx == nullptr || oru::test::oom_hit() || ctx->err == nullptr);
                EXPECT_TRUE(ctx == nullptr || oru::test::oom_hit() ||
                            ctx->completed_obj != nullptr);
            }
        },
        {.at_least = 20});
}

TEST(ConfigJson, RequiredArgumentsAreAsserted) {
    const Ops ops(oru_do_config_ops_new());
    EXPECT_ASSERTION(oru_do_config_ops_to_json(nullptr, nullptr), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_to_json_opt(nullptr, nullptr, 0), "config_ops");
    EXPECT_ASSERTION(oru_do_config_ops_to_json(ops.get(), nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_event_to_json(nullptr, nullptr), "event");
    EXPECT_ASSERTION(oru_do_event_to_json_opt(nullptr, nullptr, 0), "event");
}

}  // namespace
