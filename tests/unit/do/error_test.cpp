#include "oru/error.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "oru/name.h"
#include "oru/strbuf.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

using oru::test::Trace;
using oru::test::TraceCapture;

std::string printed(ORUDoError *err, int32_t tabs) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    EXPECT_EQ(oru_do_error_to_strbuf(err, tabs, buf), 0);
    std::string text = oru_do_strbuf_to_string(buf);
    oru_do_strbuf_deref(buf);
    return text;
}

void set_prop_err(ORUDoError *err, const char *name, int32_t code, const char *msg) {
    ORUDoName *prop = oru_do_name_new(name);
    ORUDoError *prop_err = oru_do_error_new(code, msg);
    oru_do_error_set_prop_err(err, prop, prop_err);
    oru_do_error_deref(prop_err);
    oru_do_name_deref(prop);
}

class Error : public testing::Test {
  protected:
    ~Error() override { oru_do_error_deref(err); }
    void remake(ORUDoError *other) {
        oru_do_error_deref(err);
        err = other;
    }
    ORUDoError *err = oru_do_error_new(102, "gone");
};

// The record as outside code compiled apart sees it.
struct ErrorRecord {
    char *msg;
    char *name_space;
    ORUDoError *cause;
    ORUDoPropErrs *prop_errs;
    uint32_t ref;
    int32_t code;
};

TEST_F(Error, TheRecordHasItsFieldsInOrder) {
    set_prop_err(err, "a", 1, "one");
    ORUDoError *cause = oru_do_error_new(1, "why");
    oru_do_error_set_cause(err, cause);
    oru_do_error_deref(cause);
    oru_do_error_set_namespace(err, "here");
    oru_do_error_ref(err);
    const auto &fields = *reinterpret_cast<ErrorRecord *>(err);
    EXPECT_STREQ(fields.msg, "gone");
    EXPECT_STREQ(fields.name_space, "here");
    EXPECT_EQ(fields.cause, cause);
    EXPECT_EQ(fields.prop_errs, oru_do_error_get_prop_errs(err));
    EXPECT_EQ(fields.ref, 2u);
    EXPECT_EQ(fields.code, 102);
    oru_do_error_deref(err);
}

TEST_F(Error, CarriesACodeAndACopyOfItsMessage) {
    char msg[] = "text";
    remake(oru_do_error_new(7, msg));
    msg[0] = 'n';
    EXPECT_EQ(oru_do_error_get_code(err), 7);
    EXPECT_STREQ(oru_do_error_get_msg(err), "text");
    EXPECT_EQ(oru_do_error_get_cause(err), nullptr);
    EXPECT_EQ(oru_do_error_get_namespace(err), nullptr);
    EXPECT_EQ(oru_do_error_get_prop_errs(err), nullptr);
}

TEST_F(Error, TheMessageIsATextOfItsOwnTag) {
    poolheap_stats_t stats{};
    poolheap_tag_stats(0x2900027, &stats);
    EXPECT_EQ(stats.live_blocks, 1u);
    oru_do_error_set_namespace(err, "here");
    poolheap_tag_stats(0x2900027, &stats);
    EXPECT_EQ(stats.live_blocks, 2u);
}

TEST_F(Error, MayHaveNoMessage) {
    remake(oru_do_error_new(-3, nullptr));
    EXPECT_EQ(oru_do_error_get_code(err), -3);
    EXPECT_EQ(oru_do_error_get_msg(err), nullptr);
}

TEST_F(Error, TakesACountedMessage) {
    remake(oru_do_error_new_l(1, "abcdef", 3));
    EXPECT_STREQ(oru_do_error_get_msg(err), "abc");
    remake(oru_do_error_new_l(1, "abcdef", 0));
    EXPECT_STREQ(oru_do_error_get_msg(err), "");
    remake(oru_do_error_new_l(1, nullptr, 3));
    EXPECT_EQ(oru_do_error_get_msg(err), nullptr);
    remake(oru_do_error_new_l(1, "abcdef", -1));
    EXPECT_EQ(oru_do_error_get_msg(err), nullptr);
}

ORUDoError *make_va(int32_t code, const char *format, ...) ORU_PRINTF(2, 3);
ORUDoError *make_va(int32_t code, const char *format, ...) {
    va_list args;
    va_start(args, format);
    ORUDoError *err = oru_do_error_new_va(code, format, args);
    va_end(args);
    return err;
}

TEST_F(Error, FormatsItsMessage) {
    remake(oru_do_error_new_fmt(5, "%s is %d", "this", 42));
    EXPECT_EQ(oru_do_error_get_code(err), 5);
    EXPECT_STREQ(oru_do_error_get_msg(err), "this is 42");
    remake(make_va(6, "%c%c", 'o', 'k'));
    EXPECT_EQ(oru_do_error_get_code(err), 6);
    EXPECT_STREQ(oru_do_error_get_msg(err), "ok");
}

TEST_F(Error, CutsAFormattedMessageAt255) {
    remake(oru_do_error_new_fmt(5, "%s", std::string(300, 'x').c_str()));
    EXPECT_EQ(oru_do_error_get_msg(err), std::string(255, 'x'));
    remake(oru_do_error_new_fmt(5, "%s", std::string(255, 'y').c_str()));
    EXPECT_EQ(oru_do_error_get_msg(err), std::string(255, 'y'));
}

TEST_F(Error, AFormatThatCannotBePrintedIsTheMessage) {
    remake(oru_do_error_new_fmt(5, "a %lc b", static_cast<wint_t>(0xd800)));
    EXPECT_STREQ(oru_do_error_get_msg(err), "a %lc b");
}

TEST_F(Error, TellsWhatTheSystemSaid) {
    errno = ENOENT;
    remake(oru_do_error_new_syserr());
    EXPECT_EQ(oru_do_error_get_code(err), ENOENT);
    EXPECT_STREQ(oru_do_error_get_msg(err), "No such file or directory");
}

TEST_F(Error, HoldsItsCause) {
    ORUDoError *cause = oru_do_error_new(1, "why");
    ORUDoError *effect = oru_do_error_new_w_cause(2, "what", cause);
    oru_do_error_deref(cause);
    EXPECT_EQ(oru_do_error_get_code(effect), 2);
    EXPECT_STREQ(oru_do_error_get_msg(effect), "what");
    EXPECT_EQ(oru_do_error_get_cause(effect), cause);
    EXPECT_STREQ(oru_do_error_get_msg(oru_do_error_get_cause(effect)), "why");
    oru_do_error_deref(effect);
    remake(oru_do_error_new_w_cause(2, nullptr, nullptr));
    EXPECT_EQ(oru_do_error_get_cause(err), nullptr);
}

TEST_F(Error, ANullCauseLeavesTheOldOne) {
    ORUDoError *first = oru_do_error_new(1, "first");
    ORUDoError *second = oru_do_error_new(2, "second");
    oru_do_error_set_cause(err, first);
    oru_do_error_deref(first);
    oru_do_error_set_cause(err, nullptr);
    EXPECT_EQ(oru_do_error_get_cause(err), first);
    oru_do_error_set_cause(err, first);  // the one that it holds
    EXPECT_EQ(oru_do_error_get_cause(err), first);
    oru_do_error_set_cause(err, second);
    oru_do_error_deref(second);
    EXPECT_EQ(oru_do_error_get_cause(err), second);
}

TEST_F(Error, SetsItsCode) {
    oru_do_error_set_code(err, 9);
    EXPECT_EQ(oru_do_error_get_code(err), 9);
    oru_do_error_set_code(nullptr, 9);
}

TEST_F(Error, CarriesANamespace) {
    oru_do_error_set_namespace(err, "first");
    EXPECT_STREQ(oru_do_error_get_namespace(err), "first");
    oru_do_error_set_namespace(err, oru_do_error_get_namespace(err));
    EXPECT_STREQ(oru_do_error_get_namespace(err), "first");
    oru_do_error_set_namespace_l(err, "second", 3);
    EXPECT_STREQ(oru_do_error_get_namespace(err), "sec");
    oru_do_error_set_namespace_l(err, nullptr, 3);
    EXPECT_EQ(oru_do_error_get_namespace(err), nullptr);
    EXPECT_ASSERTION(oru_do_error_set_namespace(err, nullptr), "text");
}

TEST_F(Error, MakesTheSetOfPropertyErrorsWhenItIsMissing) {
    set_prop_err(err, "a", 1, "one");
    ORUDoPropErrs *set = oru_do_error_get_prop_errs(err);
    ASSERT_NE(set, nullptr);
    set_prop_err(err, "b", 2, "two");
    EXPECT_EQ(oru_do_error_get_prop_errs(err), set);
    EXPECT_EQ(oru_do_error_get_code(oru_do_prop_errs_get_err_w_strname(set, "b")), 2);
}

TEST_F(Error, ReplacesTheSetAndNullDropsIt) {
    set_prop_err(err, "a", 1, "one");
    ORUDoPropErrs *set = oru_do_prop_errs_new();
    oru_do_error_set_prop_errs(err, set);
    oru_do_prop_errs_deref(set);
    EXPECT_EQ(oru_do_error_get_prop_errs(err), set);
    oru_do_error_set_prop_errs(err, set);  // the one that it holds
    EXPECT_EQ(oru_do_error_get_prop_errs(err), set);
    oru_do_error_set_prop_errs(err, nullptr);
    EXPECT_EQ(oru_do_error_get_prop_errs(err), nullptr);
}

TEST_F(Error, EqualityIsCodeAndMessage) {
    const auto equals = [this](int32_t code, const char *msg) {
        ORUDoError *other = oru_do_error_new_w_cause(code, msg, err);
        oru_do_error_set_namespace(other, "elsewhere");
        set_prop_err(other, "a", 1, "one");
        const int32_t result = oru_do_error_equals(err, other);
        EXPECT_EQ(oru_do_error_equals(other, err), result);
        oru_do_error_deref(other);
        return result != 0;
    };
    EXPECT_TRUE(equals(102, "gone"));
    EXPECT_FALSE(equals(103, "gone"));
    EXPECT_FALSE(equals(102, "Gone"));
    EXPECT_FALSE(equals(102, "gon"));
    EXPECT_FALSE(equals(102, nullptr));
    EXPECT_EQ(oru_do_error_equals(err, nullptr), 0);
    remake(oru_do_error_new(102, nullptr));
    EXPECT_TRUE(equals(102, nullptr));
    EXPECT_FALSE(equals(102, ""));
}

TEST_F(Error, PrintsOnALine) {
    EXPECT_EQ(printed(err, 0), "Error(102) : gone\n");
    EXPECT_EQ(printed(err, 2), "\t\tError(102) : gone\n\t\t");
    remake(oru_do_error_new(-1, ""));
    EXPECT_EQ(printed(err, 0), "Error(-1) : \n");
    EXPECT_EQ(printed(nullptr, 3), "");
}

TEST_F(Error, PrintsItsCausesWithGrowingIndentation) {
    ORUDoError *c = oru_do_error_new(3, "c");
    ORUDoError *b = oru_do_error_new_w_cause(2, "b", c);
    remake(oru_do_error_new_w_cause(1, "a", b));
    oru_do_error_deref(b);
    oru_do_error_deref(c);
    EXPECT_EQ(printed(err, 0),
              "Error(1) : a\n"
              "\t,Cause : \tError(2) : b\n"
              "\t\t,Cause : \t\tError(3) : c\n"
              "\t\t"  // ends c
              "\t");  // ends b
}

TEST_F(Error, PrintsItsPropertyErrorsBehindTheCause) {
    ORUDoError *cause = oru_do_error_new(4, "why");
    remake(oru_do_error_new_w_cause(5, "what", cause));
    oru_do_error_deref(cause);
    set_prop_err(err, "p", 102, "gone");
    set_prop_err(err, "q", 1, "no more");
    EXPECT_EQ(printed(err, 1),
              "\tError(5) : what\n"
              "\t\t,Cause : \t\tError(4) : why\n\t\t"
              "\t\t,Property Errs : \t\t{\n"
              "\t\t\tp : Error(102) : gone\n"
              ", \t\t\tq : Error(1) : no more\n"
              "\t\t}\n"
              "\t");
}

TEST_F(Error, PrintsOnAStream) {
    FILE *stream = std::tmpfile();
    EXPECT_EQ(oru_do_print_error(stream, 0, err), 0);
    EXPECT_EQ(oru_do_print_error(stream, 0, nullptr), 0);
    std::rewind(stream);
    char line[64] = "";
    EXPECT_NE(std::fgets(line, sizeof line, stream), nullptr);
    EXPECT_STREQ(line, "Error(102) : gone\n");
    EXPECT_EQ(std::fgets(line, sizeof line, stream), nullptr);

    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_print_error(stream, 0, err), 0);
    poolheap_fail_off();
    EXPECT_EQ(std::ftell(stream), 18);
    std::fclose(stream);
}

TEST_F(Error, IsTracedAndCounted) {
    TraceCapture traces(8);
    EXPECT_EQ(oru_do_error_ref(err), err);
    oru_do_error_deref(err);
    char words[2][100];
    std::snprintf(words[0], 100, "oru ref oru_do_error %p 2", static_cast<void *>(err));
    std::snprintf(words[1], 100, "oru deref oru_do_error %p 2", static_cast<void *>(err));
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{8, words[0]}, {8, words[1]}}));
    EXPECT_EQ(oru_do_error_ref(nullptr), nullptr);
    oru_do_error_deref(nullptr);
}

TEST_F(Error, ReleasesItsCauseBeforeThePropertyErrors) {
    ORUDoError *cause = oru_do_error_new(1, nullptr);
    oru_do_error_set_cause(err, cause);
    oru_do_error_deref(cause);
    ORUDoPropErrs *errs = oru_do_prop_errs_new();
    oru_do_error_set_prop_errs(err, errs);
    oru_do_prop_errs_deref(errs);
    char words[3][100];
    std::snprintf(words[0], 100, "oru deref oru_do_error %p 1", static_cast<void *>(err));
    std::snprintf(words[1], 100, "oru deref oru_do_error %p 1", static_cast<void *>(cause));
    std::snprintf(words[2], 100, "oru deref oru_do_prop_errs %p 1", static_cast<void *>(errs));
    TraceCapture traces(8);
    oru_do_error_deref(err);
    err = nullptr;
    EXPECT_EQ(traces.lines(), (std::vector<Trace>{{8, words[0]}, {8, words[1]}, {8, words[2]}}));
}

TEST_F(Error, ReleasesTheCauseOfItsCauseBeforeThePropertyErrorsOfThat) {
    ORUDoError *root = oru_do_error_new(1, nullptr);
    ORUDoError *cause = oru_do_error_new_w_cause(1, nullptr, root);
    oru_do_error_deref(root);
    oru_do_error_set_cause(err, cause);
    ORUDoPropErrs *errs = oru_do_prop_errs_new();
    oru_do_error_set_prop_errs(cause, errs);
    oru_do_error_deref(cause);
    oru_do_prop_errs_deref(errs);
    char words[4][100];
    std::snprintf(words[0], 100, "oru deref oru_do_error %p 1", static_cast<void *>(err));
    std::snprintf(words[1], 100, "oru deref oru_do_error %p 1", static_cast<void *>(cause));
    std::snprintf(words[2], 100, "oru deref oru_do_error %p 1", static_cast<void *>(root));
    std::snprintf(words[3], 100, "oru deref oru_do_prop_errs %p 1", static_cast<void *>(errs));
    TraceCapture traces(8);
    oru_do_error_deref(err);
    err = nullptr;
    EXPECT_EQ(traces.lines(),
              (std::vector<Trace>{{8, words[0]}, {8, words[1]}, {8, words[2]}, {8, words[3]}}));
}

TEST_F(Error, MessageThatCannotBeHadIsLeftOut) {
    poolheap_fail_nth(2, 0);
    remake(oru_do_error_new(8, "message"));
    poolheap_fail_off();
    ASSERT_NE(err, nullptr);
    EXPECT_EQ(oru_do_error_get_code(err), 8);
    EXPECT_EQ(oru_do_error_get_msg(err), nullptr);
}

TEST(ErrorMemory, EveryAllocationMayFail) {
    ORUDoName *name = oru_do_name_new("a");
    oru::test::sweep_oom(
        [name] {
            ORUDoError *cause = oru_do_error_new_l(1, "why", 3);
            ORUDoError *err = oru_do_error_new_w_cause(2, "what", cause);
            oru_do_error_deref(cause);
            if (err == nullptr)
                return;
            EXPECT_EQ(oru_do_error_get_cause(err), cause);
            oru_do_error_set_namespace(err, "here");
            ORUDoError *prop_err = oru_do_error_new(3, nullptr);
            if (prop_err != nullptr)
                oru_do_error_set_prop_err(err, name, prop_err);
            oru_do_error_deref(prop_err);
            oru_do_error_deref(err);
        },
        {.promised_deaths = {}, .at_least = 6});
    oru_do_name_deref(name);
}

// What was printed before memory ran out is a beginning of the whole text.
void expect_beginning(ORUDoError *err, const std::string &whole) {
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    if (buf == nullptr)
        return;
    EXPECT_EQ(oru_do_error_to_strbuf(err, 0, buf), 0);
    const char *text = oru_do_strbuf_to_string(buf);
    if (oru_do_strbuf_get_err(buf) == 0) {
        EXPECT_EQ(text, whole);
    } else if (text != nullptr) {
        EXPECT_EQ(whole.rfind(text, 0), 0u) << text;
    }
    oru_do_strbuf_deref(buf);
}

TEST(ErrorMemory, PrintingMayFail) {
    const std::string why(300, 'y');
    const std::string what(300, 'x');
    ORUDoError *cause = oru_do_error_new(1, why.c_str());
    ORUDoError *err = oru_do_error_new_w_cause(2, what.c_str(), cause);
    set_prop_err(err, "p", 3, why.c_str());
    const std::string whole = "Error(2) : " + what + "\n\t,Cause : \tError(1) : " + why +
                              "\n\t\t,Property Errs : \t{\n\t\tp : Error(3) : " + why + "\n\t}\n";
    oru::test::sweep_oom([&] { expect_beginning(err, whole); },
                         {.promised_deaths = {}, .at_least = 4});
    oru::test::sweep_oom(
        [err] {
            FILE *stream = std::fopen("/dev/null", "w");
            EXPECT_EQ(oru_do_print_error(stream, 0, err), 0);
            std::fclose(stream);
        },
        {.promised_deaths = {}, .at_least = 4});
    oru_do_error_deref(err);
    oru_do_error_deref(cause);
}

TEST(ErrorMemory, EveryConstructorMayFail) {
    oru::test::sweep_oom([] { oru_do_error_deref(oru_do_error_new_fmt(1, "%s", "text")); },
                         {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom([] { oru_do_error_deref(make_va(1, "%s", "text")); },
                         {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom(
        [] {
            errno = ENOENT;
            ORUDoError *err = oru_do_error_new_syserr();
            if (err != nullptr) {
                EXPECT_EQ(oru_do_error_get_code(err), ENOENT);
            }
            oru_do_error_deref(err);
        },
        {.promised_deaths = {}, .at_least = 2});
    oru::test::sweep_oom(
        [] {
            ORUDoError *err = oru_do_error_new(1, "text");
            if (err == nullptr)
                return;
            oru_do_error_set_namespace(err, "first");
            oru_do_error_set_namespace_l(err, "second", 3);
            const char *name = oru_do_error_get_namespace(err);
            EXPECT_TRUE(name == nullptr || std::string(name) == "sec");
            oru_do_error_deref(err);
        },
        {.promised_deaths = {}, .at_least = 4});
}

TEST(ErrorNull, RequiredArgumentsAreNamed) {
    const char *no_format = nullptr;
    EXPECT_ASSERTION(oru_do_error_new_fmt(1, no_format, 1), "format");
    EXPECT_ASSERTION(make_va(1, no_format, 1), "format");
    ORUDoError *err = oru_do_error_new(1, nullptr);
    ORUDoStrbuf *buf = oru_do_strbuf_new();
    ORUDoName *name = oru_do_name_new("a");
    EXPECT_ASSERTION(oru_do_error_set_cause(nullptr, err), "err");
    EXPECT_ASSERTION(oru_do_error_set_namespace(nullptr, "a"), "err");
    EXPECT_ASSERTION(oru_do_error_set_namespace_l(nullptr, "a", 1), "err");
    EXPECT_ASSERTION(oru_do_error_set_prop_err(nullptr, name, err), "err");
    EXPECT_ASSERTION(oru_do_error_set_prop_err(err, nullptr, err), "name");
    EXPECT_ASSERTION(oru_do_error_set_prop_err(err, name, nullptr), "err");
    EXPECT_ASSERTION(oru_do_error_set_prop_errs(nullptr, nullptr), "err");
    EXPECT_ASSERTION(oru_do_error_get_code(nullptr), "err");
    EXPECT_ASSERTION(oru_do_error_get_msg(nullptr), "err");
    EXPECT_ASSERTION(oru_do_error_get_cause(nullptr), "err");
    EXPECT_ASSERTION(oru_do_error_get_namespace(nullptr), "err");
    EXPECT_ASSERTION(oru_do_error_get_prop_errs(nullptr), "err");
    EXPECT_ASSERTION(oru_do_error_equals(nullptr, err), "error1");
    EXPECT_ASSERTION(oru_do_error_to_strbuf(err, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_error_to_strbuf(nullptr, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_error_to_strbuf(err, 0, buf), "err->msg");
    EXPECT_ASSERTION(oru_do_print_error(nullptr, 0, nullptr), "stream");
    oru_do_name_deref(name);
    oru_do_strbuf_deref(buf);
    oru_do_error_deref(err);
}

TEST_F(Error, ChainsOfCausesMayBeLongerThanTheStackIsDeep) {
    ORUDoError *chain = oru_do_error_new(1, "first");
    ORUDoError *shared = oru_do_error_ref(chain);
    for (int i = 0; i < 300000; ++i) {
        ORUDoError *next = oru_do_error_new_w_cause(1, "next", chain);
        oru_do_error_deref(chain);
        chain = next;
    }
    oru_do_error_deref(chain);
    EXPECT_STREQ(oru_do_error_get_msg(shared), "first");
    oru_do_error_deref(shared);
}

}  // namespace
