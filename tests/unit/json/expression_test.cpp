// Expressions: each function, references, and what errors say.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "oru/properties.h"
#include "oru/vlist.h"
#include "tests/support/oom.h"
#include "tests/unit/json/expression_support.h"

namespace {

using oru::test::Context;
using oru::test::Expression;
using oru::test::json;
using oru::test::Owned;
using oru::test::size_of;
using oru::test::Value;

// ---- Arithmetic ----

TEST_F(Expression, CountsFromTheFirstOperandOn) {
    EXPECT_EQ(eval("{'_add()':[1]}"), "{'%long':1}");
    EXPECT_EQ(eval("{'_add()':[1,2,3]}"), "{'%long':6}");
    EXPECT_EQ(eval("{'_sub()':[10,3,2]}"), "{'%long':5}");
    EXPECT_EQ(eval("{'_mult()':[2,3,4]}"), "{'%long':24}");
    EXPECT_EQ(eval("{'_div()':[7,2]}"), "{'%long':3}");
    EXPECT_EQ(eval("{'_div()':[-7,2]}"), "{'%long':-3}");
    EXPECT_EQ(eval("{'_mod()':[7,2]}"), "{'%long':1}");
    EXPECT_EQ(eval("{'_mod()':[-7,2]}"), "{'%long':-1}");
}

TEST_F(Expression, ABareArgumentIsAListOfOne) {
    EXPECT_EQ(eval("{'_add()':4}"), "{'%long':4}");
    EXPECT_EQ(eval("{'_tostring()':'a'}"), "{'%string':'a'}");
}

// The braces of an object are the function's own then, so that it has no argument.
TEST_F(Expression, ABareArgumentIsNoObject) {
    EXPECT_EQ(eval("{'_add()':{'%int':4}}"), "none 4 ");
}

TEST_F(Expression, NestedOnesAreComputedFirst) {
    EXPECT_EQ(eval("{'_add()':[1,{'_mult()':[2,3]}]}"), "{'%long':7}");
}

TEST_F(Expression, TheFirstOperandDecidesTheMode) {
    EXPECT_EQ(eval("{'_add()':[{'%uint':1},2]}"), "{'%ulong':3}");
    EXPECT_EQ(eval("{'_add()':[1,{'%uint':2}]}"), "{'%long':3}");
    EXPECT_EQ(eval("{'_sub()':[{'%ubyte':1},2]}"), "{'%ulong':18446744073709551615}");
    EXPECT_EQ(eval("{'_div()':[{'%ulong':18446744073709551615},2]}"),
              "{'%ulong':9223372036854775807}");
    EXPECT_EQ(eval("{'_mod()':[{'%uint':7},-2]}"), "{'%ulong':7}");
}

TEST_F(Expression, NumbersWrapAround) {
    EXPECT_EQ(eval("{'_add()':[{'%long':9223372036854775807},1]}"),
              "{'%long':-9223372036854775808}");
    EXPECT_EQ(eval("{'_mult()':[{'%ulong':9223372036854775808},2]}"), "{'%ulong':0}");
}

TEST_F(Expression, NullsAreSkipped) {
    EXPECT_EQ(eval("{'_add()':[null,1,null,2]}"), "{'%long':3}");
    EXPECT_EQ(eval("{'_add()':[null]}"), "{'%long':0}");
    EXPECT_EQ(eval("{'_sub()':[null,{'%uint':5},1]}"), "{'%ulong':4}");
}

TEST_F(Expression, EveryStringOfACalculationIsResolved) {
    variables.set("$n", "{'%int':4}");
    variables.set("plain", "{'%int':5}");
    EXPECT_EQ(eval("{'_add()':['$n',1]}"), "{'%long':5}");
    EXPECT_EQ(eval("{'_add()':['plain',1]}"), "{'%long':6}");
}

TEST_F(Expression, AnErrorComesBesideWhatWasReached) {
    EXPECT_EQ(eval("{'_add()':[1,'unknown',5]}"), "{'%long':1} 101 eval_math");
    EXPECT_EQ(eval("{'_add()':[1,{'%double':2.5},5]}"), "{'%long':1} 101 eval_math");
    EXPECT_EQ(eval("{'_add()':[true]}"), "{'%long':0} 101 eval_math");
    EXPECT_EQ(eval_alone("{'_add()':['$n']}"), "{'%long':0} 101 eval_math");
}

TEST_F(Expression, AnEnumerationIsNoReference) {
    EXPECT_EQ(eval("{'_add()':[{'%enumeration':'$n'}]}"), "{'%long':0} 101 eval_math");
}

// The process ends, by the processor's fault or by the sanitizer that catches it.
TEST_F(Expression, DivisionIsNotGuarded) {
    EXPECT_DEATH(eval("{'_div()':[1,0]}"), "");
    EXPECT_DEATH(eval("{'_mod()':[1,0]}"), "");
    EXPECT_DEATH(eval("{'_div()':[{'%uint':1},{'%uint':0}]}"), "");
    EXPECT_DEATH(eval("{'_div()':[{'%long':-9223372036854775808},-1]}"), "");
    EXPECT_DEATH(eval("{'_mod()':[{'%long':-9223372036854775808},-1]}"), "");
}

// ---- Steps ----

TEST_F(Expression, StepsGiveTheNumberBeforeAndStoreTheOneBehind) {
    variables.set("$n", "{'%int':4}");
    EXPECT_EQ(eval("{'_incr()':['$n']}"), "{'%long':4}");
    EXPECT_EQ(variables.get("$n"), "{'%long':5}");
    EXPECT_EQ(eval("{'_decr()':['$n']}"), "{'%long':5}");
    EXPECT_EQ(variables.get("$n"), "{'%long':4}");
    variables.set("$u", "{'%ubyte':0}");
    EXPECT_EQ(eval("{'_decr()':['$u']}"), "{'%ulong':0}");
    EXPECT_EQ(variables.get("$u"), "{'%ulong':18446744073709551615}");
}

TEST_F(Expression, AStepOfALiteralChangesNothing) {
    EXPECT_EQ(eval("{'_incr()':[4]}"), "{'%long':4}");
    EXPECT_EQ(eval("{'_incr()':[{'%uint':4}]}"), "{'%ulong':4}");
}

TEST_F(Expression, AFailedStepCountsFromZero) {
    EXPECT_EQ(eval("{'_incr()':['unknown']}"), "{'%long':0} 101 eval_incr_decr");
    EXPECT_EQ(variables.get("unknown"), "{'%long':1}");
    EXPECT_EQ(eval("{'_incr()':[{'%double':1.5}]}"), "{'%long':0} 101 eval_incr_decr");
    EXPECT_EQ(eval_alone("{'_incr()':['$n']}"), "{'%long':0} 101 eval_incr_decr");
}

// ---- Tables ----

TEST_F(Expression, MapGivesTheResultBehindAnEqualKey) {
    EXPECT_EQ(eval("{'_map()':['b','a',1,'b',2]}"), "{'%int':2}");
    EXPECT_EQ(eval("{'_map()':['c','a',1,'b',2]}"), "null");
    EXPECT_EQ(eval("{'_map()':['c','a',1,9]}"), "{'%int':9}");
    EXPECT_EQ(eval("{'_map()':['a']}"), "null");
    EXPECT_EQ(eval("{'_map()':['a','d']}"), "{'%string':'d'}");
}

TEST_F(Expression, OnlyTheSelectorOfAMapIsResolved) {
    variables.set("$s", "{'%string':'b'}");
    EXPECT_EQ(eval("{'_map()':['$s','a',1,'b','$s']}"), "{'%string':'$s'}");
    EXPECT_EQ(eval("{'_map()':['$$s','$$s',1]}"), "{'%int':1}");
    EXPECT_EQ(eval_alone("{'_map()':['$s','$s',1]}"), "{'%int':1}");
    EXPECT_EQ(eval("{'_map()':['@s','a',1,9]}"), "{'%int':9}");
}

TEST_F(Expression, TheSelectorIsTheFirstArgumentThatIsNotNull) {
    EXPECT_EQ(eval("{'_map()':[null,'a','a',1]}"), "{'%int':1}");
    EXPECT_EQ(eval("{'_map()':[1,'a',2]}"), "null 101 eval_map");
    EXPECT_EQ(eval("{'_map()':[null]}"), "null");
}

// ---- Texts ----

TEST_F(Expression, TostringJoinsTextForms) {
    EXPECT_EQ(eval("{'_tostring()':['a',1,true]}"), "{'%string':'a1true'}");
    EXPECT_EQ(eval("{'_tostring()':['a',null,'b']}"), "{'%string':'ab'}");
}

TEST_F(Expression, TostringResolvesReferences) {
    variables.set("$n", "{'%int':4}");
    variables.set("@m", "{'%string':'m'}");
    EXPECT_EQ(eval("{'_tostring()':['$n','@m','plain']}"), "{'%string':'4mplain'}");
    EXPECT_EQ(eval("{'_tostring()':['$$n','@@m','$x']}"), "{'%string':'$$n@@m$x'}");
    EXPECT_EQ(eval_alone("{'_tostring()':['$n']}"), "{'%string':'$n'}");
}

// ---- Keys ----

TEST_F(Expression, KeyGivesAKeyOfTheUri) {
    const std::string uri = "{'%mr_uri':'/a;x=1;y=2/b;z=3'}";
    EXPECT_EQ(eval("{'_key()':[" + uri + "]}"), "{'%string':'3'}");
    EXPECT_EQ(eval("{'_key()':[" + uri + ",'z']}"), "{'%string':'3'}");
    EXPECT_EQ(eval("{'_key()':[" + uri + ",0]}"), "{'%string':'3'}");
    EXPECT_EQ(eval("{'_key()':[" + uri + ",'y',0]}"), "{'%string':'2'}");
    EXPECT_EQ(eval("{'_key()':[" + uri + ",1,0]}"), "{'%string':'2'}");
    EXPECT_EQ(eval("{'_key()':[{'%any_uri':'/a;x=1'}]}"), "{'%string':'1'}");
}

TEST_F(Expression, TheUriOfAKeyMayBeAReference) {
    variables.set("@_uri", "{'%mr_uri':'/a;x=1'}");
    EXPECT_EQ(eval("{'_key()':['@_uri','x']}"), "{'%string':'1'}");
}

TEST_F(Expression, EveryFailureOfAKeyIsTheSame) {
    for (const char *text : {"{'_key()':['/a;x=1']}",                   // no URI
                             "{'_key()':['@unknown']}",                 // stays a text
                             "{'_key()':[null]}",                       //
                             "{'_key()':[{'%mr_uri':'/a'}]}",           // no keys
                             "{'_key()':[{'%mr_uri':'/a'},'x']}",       //
                             "{'_key()':[{'%mr_uri':'/a;x=1'},'y']}",   // no such key
                             "{'_key()':[{'%mr_uri':'/a;x=1'},1]}",     //
                             "{'_key()':[{'%mr_uri':'/a;x=1'},-1]}",    //
                             "{'_key()':[{'%mr_uri':'/a;x=1'},true]}",  // neither name nor position
                             "{'_key()':[{'%mr_uri':'/a;x=1'},'x',1]}",    // no such segment
                             "{'_key()':[{'%mr_uri':'/a;x=1'},'x','0']}",  //
                             "{'_key()':[{'%mr_uri':'/a;x=1'},{'%long':4294967296}]}"}) {
        EXPECT_EQ(eval(text), "null 10002 eval_key") << text;
    }
}

// ---- Smallest and largest ----

TEST_F(Expression, MinAndMaxGiveTheExtreme) {
    EXPECT_EQ(eval("{'_min()':[3,1,2]}"), "{'%long':1}");
    EXPECT_EQ(eval("{'_max()':[3,-1,7,2]}"), "{'%long':7}");
    EXPECT_EQ(eval("{'_max()':[{'%ulong':18446744073709551615},{'%uint':1}]}"),
              "{'%ulong':18446744073709551615}");
    EXPECT_EQ(eval("{'_min()':[{'%uint':5},{'%uint':4}]}"), "{'%ulong':4}");
}

TEST_F(Expression, AnUnsetVariableIsNeutral) {
    EXPECT_EQ(eval("{'_min()':['$unset',3]}"), "{'%long':3}");
    EXPECT_EQ(variables.get("$unset"), "{'%long':3}");
    EXPECT_EQ(eval("{'_max()':['$other',5]}"), "{'%long':5}");
    EXPECT_EQ(eval("{'_max()':['$other',4]}"), "{'%long':5}");
    EXPECT_EQ(variables.get("$other"), "{'%long':5}");
    EXPECT_EQ(eval("{'_min()':['$none']}"), "{'%long':9223372036854775807}");
    EXPECT_EQ(eval("{'_max()':['$no']}"), "{'%long':-9223372036854775808}");
}

TEST_F(Expression, OnlyAFirstVariableIsStored) {
    variables.set("$b", "{'%int':1}");
    EXPECT_EQ(eval("{'_min()':[3,'$b']}"), "{'%long':1}");
    EXPECT_EQ(variables.get("$b"), "{'%int':1}");
}

TEST_F(Expression, MinAndMaxEndAtAnotherMode) {
    EXPECT_EQ(eval("{'_max()':[{'%uint':5},9]}"), "{'%ulong':5} 101 eval_min_max");
    EXPECT_EQ(eval("{'_max()':[5,{'%uint':9},7]}"), "{'%long':5} 101 eval_min_max");
    EXPECT_EQ(eval("{'_min()':[true]}"), "{'%long':0} 101 eval_min_max");
    EXPECT_EQ(eval_alone("{'_min()':['$n']}"), "{'%long':0} 101 eval_min_max");
}

// ---- Where expressions stand ----

TEST_F(Expression, WithoutArgumentsThereIsNoResult) {
    EXPECT_EQ(eval("{'_add()':[]}"), "none 4 ");
    EXPECT_EQ(eval("{'_min()':[]}"), "none 4 ");
    EXPECT_EQ(eval("{'_key()':[]}"), "none 4 ");
}

TEST_F(Expression, ValuesAreTheirOwnResult) {
    EXPECT_EQ(eval("{'%int':5}"), "{'%int':5}");
    EXPECT_EQ(eval("'$n'"), "{'%string':'$n'}");
    EXPECT_EQ(eval("null"), "null");
    EXPECT_EQ(eval("{'%properties':{'a':1}}"), "none");
    EXPECT_EQ(eval("5"), "none");  // the parser waits for more digits
    EXPECT_EQ(eval(""), "none");
}

TEST_F(Expression, StandsWhereverAValueMay) {
    const Context ctx =
        oru::test::parsed(json("{'%properties':{'a':{'_add()':[1,2]},'b':{'_key()':['x']}}}"));
    ASSERT_NE(ctx->completed_obj, nullptr);
    auto *props = static_cast<ORUDoProperties *>(ctx->completed_obj);
    EXPECT_EQ(
        oru::test::written([=](ORUDoStrbuf *b) { return oru_do_properties_to_json(props, b); }),
        json("{'%properties':{'a':{'%long':3},'b':null}}"));
    EXPECT_EQ(oru::test::code_of(ctx), 10002);
}

TEST_F(Expression, TheLastErrorIsKept) {
    EXPECT_EQ(eval("{'_add()':[{'_key()':['x']},true]}"), "{'%long':0} 101 eval_math");
}

TEST_F(Expression, OneFunctionAtATime) {
    using List = Owned<ORUDoVlist, oru_do_vlist_deref>;
    const List list(oru_do_vlist_new());
    const auto call = [&](int64_t code) {
        ORUDoError *error = nullptr;
        const Value value(
            oru_do_json_eval_expr_internal(code, list.get(), nullptr, nullptr, nullptr, &error));
        return with_error(value, error);
    };
    for (const int64_t code : {0x1000001, 0x1000002, 0x1000003, 0x1000004, 0x1000005, 0x1000006,
                               0x1000007, 0x100000B, 0x100000C})
        EXPECT_EQ(call(code), "{'%long':0}") << code;
    EXPECT_EQ(call(0x1000008), "null");
    EXPECT_EQ(call(0x1000009), "{'%string':''}");
    EXPECT_EQ(call(0x100000A), "none 10002 eval_key");
    EXPECT_EQ(call(0x1000000), "none");
    EXPECT_EQ(call(0x100000D), "none");
    EXPECT_EQ(call(0x50006), "none");
    // Nobody asks for the error.
    EXPECT_EQ(
        oru_do_json_eval_expr_internal(0x100000A, list.get(), nullptr, nullptr, nullptr, nullptr),
        nullptr);
}

TEST_F(Expression, TheDeserialiserChecksWhatItIsGiven) {
    EXPECT_EQ(oru_json_expr_deser(nullptr, nullptr), nullptr);
    const Context ctx = oru::test::parsed("1");
    EXPECT_EQ(oru_json_expr_deser(ctx.get(), nullptr), nullptr);
    EXPECT_EQ(oru::test::code_of(ctx), ORU_JSON_ERR_NO_ELEMENT);
}

TEST(ExpressionMemory, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [] {
            for (const char *expression :
                 {"{'_add()':[1,{'_min()':[2,3]},{'_map()':['a','a',2]}]}",
                  "{'_tostring()':['a',1]}", "{'_key()':[{'%mr_uri':'/a;x=1'},'x']}",
                  "{'_incr()':[1]}"}) {
                const std::string text = json(expression);
                const Value value(oru_do_json_eval_expr(text.data(), size_of(text), nullptr,
                                                        nullptr, nullptr, nullptr));
                EXPECT_TRUE(value != nullptr || oru::test::oom_hit());
            }
        },
        {.at_least = 30});
}

}  // namespace
