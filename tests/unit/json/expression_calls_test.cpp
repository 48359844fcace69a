// What expressions ask of their callers: references to resolve, values to store.
#include <csignal>
#include <string>
#include <vector>

#include "oru/vlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/json/expression_support.h"

#include <oruplatform/poolheap.h>

namespace {

using oru::test::Error;
using oru::test::json;
using oru::test::Owned;
using oru::test::shown;
using oru::test::size_of;
using oru::test::Value;
using Lines = std::vector<std::string>;

// Writes down every call; `$nothing` resolves to null, names that are not known to the default.
struct Caller {
    Lines calls;
    oru::test::Variables variables;

    static ORUDoValue *resolve(void *user, const char *text, ORUDoValue *default_value) {
        auto *self = static_cast<Caller *>(user);
        self->calls.push_back("resolve " + std::string(text) + " " +
                              (default_value != nullptr ? shown(default_value) : "none"));
        if (std::string(text) == "$nothing")
            return nullptr;
        return oru::test::Variables::resolve(&self->variables, text, default_value);
    }
    static void store(void *user, const char *text, ORUDoValue *value) {
        auto *self = static_cast<Caller *>(user);
        self->calls.push_back("set " + std::string(text) + " " + shown(value));
        oru::test::Variables::store(&self->variables, text, value);
    }
};

class ExpressionCalls : public oru::test::Expression {
  protected:
    ExpressionCalls() {
        caller.variables.set("$n", "{'%int':4}");
        caller.variables.set("@m", "{'%uint':9}");
        caller.variables.set("plain", "{'%int':2}");
        caller.variables.set("$s", "{'%string':'b'}");
        caller.variables.set("@uri", "{'%mr_uri':'/a;k=1'}");
    }

    std::string call(const std::string &expression, bool resolving = true, bool storing = true) {
        caller.calls.clear();
        const std::string text = json(expression);
        ORUDoError *error = nullptr;
        const Value value(
            oru_do_json_eval_expr(text.data(), size_of(text), resolving ? Caller::resolve : nullptr,
                                  storing ? Caller::store : nullptr, &caller, &error));
        return with_error(value, error);
    }

    Caller caller;
};

TEST_F(ExpressionCalls, ArithmeticResolvesEveryStringWithItselfAsDefault) {
    for (const char *function : {"_add", "_sub", "_mult", "_div", "_mod"}) {
        EXPECT_EQ(call("{'" + std::string(function) + "()':['$n','plain']}").substr(0, 10),
                  "{'%long':" + std::string(function == std::string("_add")    ? "6"
                                            : function == std::string("_mult") ? "8"
                                            : function == std::string("_mod")  ? "0"
                                                                               : "2"));
        EXPECT_EQ(caller.calls,
                  (Lines{"resolve $n {'%string':'$n'}", "resolve plain {'%string':'plain'}"}));
    }
    EXPECT_EQ(call("{'_add()':[1,'@@m',5]}"), "{'%long':1} 101 eval_math");
    EXPECT_EQ(caller.calls, Lines{"resolve @@m {'%string':'@@m'}"});
    // Enumerations are no strings here.
    call("{'_add()':[{'%enumeration':'plain'}]}");
    EXPECT_EQ(caller.calls, Lines{});
}

TEST_F(ExpressionCalls, AVariableDecidesTheModeToo) {
    EXPECT_EQ(call("{'_add()':['@m',1]}"), "{'%ulong':10}");
    EXPECT_EQ(call("{'_sub()':['$n',{'%uint':5}]}"), "{'%long':-1}");
}

TEST_F(ExpressionCalls, WhatResolvesToNothingIsSkippedByArithmetic) {
    caller.variables.set("$null", "null");
    EXPECT_EQ(call("{'_add()':['$nothing','$null',3]}"), "{'%long':3}");
    EXPECT_EQ(call("{'_sub()':[10,'$nothing',3]}"), "{'%long':7}");
}

TEST_F(ExpressionCalls, StepsResolveTheirNameAndStoreUnderIt) {
    EXPECT_EQ(call("{'_incr()':['$n']}"), "{'%long':4}");
    EXPECT_EQ(caller.calls, (Lines{"resolve $n {'%string':'$n'}", "set $n {'%long':5}"}));
    EXPECT_EQ(call("{'_decr()':['plain','@m']}"), "{'%long':2}");
    EXPECT_EQ(caller.calls, (Lines{"resolve plain {'%string':'plain'}", "set plain {'%long':1}"}));
    EXPECT_EQ(call("{'_incr()':['@m']}", true, false), "{'%ulong':9}");
    EXPECT_EQ(caller.calls, Lines{"resolve @m {'%string':'@m'}"});
    EXPECT_EQ(call("{'_incr()':[7]}"), "{'%long':7}");
    EXPECT_EQ(caller.calls, Lines{});
    // With nobody to resolve it the text is no name.
    EXPECT_EQ(call("{'_incr()':['$n']}", false, true), "{'%long':0} 101 eval_incr_decr");
    EXPECT_EQ(caller.calls, Lines{});
}

TEST_F(ExpressionCalls, AFailedStepStoresAllTheSame) {
    EXPECT_EQ(call("{'_incr()':['$s']}"), "{'%long':0} 101 eval_incr_decr");
    EXPECT_EQ(caller.calls, (Lines{"resolve $s {'%string':'$s'}", "set $s {'%long':1}"}));
    EXPECT_EQ(call("{'_decr()':['$nothing']}"), "{'%long':0} 101 eval_incr_decr");
    EXPECT_EQ(caller.calls,
              (Lines{"resolve $nothing {'%string':'$nothing'}", "set $nothing {'%long':-1}"}));
}

TEST_F(ExpressionCalls, AMapResolvesItsSelectorWithoutADefault) {
    EXPECT_EQ(call("{'_map()':['$s','$s',1,'b','$n']}"), "{'%string':'$n'}");
    EXPECT_EQ(caller.calls, Lines{"resolve $s none"});
    for (const char *name : {"@unknown", "$nothing", "$", "@"}) {
        EXPECT_EQ(call("{'_map()':['" + std::string(name) + "','" + name + "',1,'$n']}"),
                  "{'%string':'$n'}");
        EXPECT_EQ(caller.calls, Lines{"resolve " + std::string(name) + " none"});
    }
    for (const char *literal : {"plain", "$$s", "@@s", "a$s", ""}) {
        EXPECT_EQ(call("{'_map()':['" + std::string(literal) + "','" + literal + "',1]}"),
                  "{'%int':1}");
        EXPECT_EQ(caller.calls, Lines{});
    }
    // The signs are doubled only with their own kind.
    call("{'_map()':['$@s']}");
    EXPECT_EQ(caller.calls, Lines{"resolve $@s none"});
    call("{'_map()':['@$s']}");
    EXPECT_EQ(caller.calls, Lines{"resolve @$s none"});
}

TEST_F(ExpressionCalls, TostringResolvesReferencesWithThemselvesAsDefault) {
    EXPECT_EQ(call("{'_tostring()':['$n','plain','@@m','@m','$nothing','@x',1]}"),
              "{'%string':'4plain@@m9@x1'}");
    EXPECT_EQ(caller.calls,
              (Lines{"resolve $n {'%string':'$n'}", "resolve @m {'%string':'@m'}",
                     "resolve $nothing {'%string':'$nothing'}", "resolve @x {'%string':'@x'}"}));
    // A null that a reference stands for has a text.
    caller.variables.set("$null", "null");
    EXPECT_EQ(call("{'_tostring()':['$null',null]}"), "{'%string':'null'}");
}

TEST_F(ExpressionCalls, AKeyResolvesItsUriOnly) {
    caller.variables.set("$k", "{'%string':'k'}");
    EXPECT_EQ(call("{'_key()':['@uri','k']}"), "{'%string':'1'}");
    EXPECT_EQ(caller.calls, Lines{"resolve @uri {'%string':'@uri'}"});
    EXPECT_EQ(call("{'_key()':['@uri','$k']}"), "null 10002 eval_key");
    EXPECT_EQ(caller.calls, Lines{"resolve @uri {'%string':'@uri'}"});
    EXPECT_EQ(call("{'_key()':['$nothing']}"), "null 10002 eval_key");
    EXPECT_EQ(call("{'_key()':['@@uri']}"), "null 10002 eval_key");
    EXPECT_EQ(caller.calls, Lines{});
    EXPECT_EQ(call("{'_key()':['@uri']}", false), "null 10002 eval_key");
}

TEST_F(ExpressionCalls, ExtremesResolveEveryStringAndStoreUnderTheFirst) {
    EXPECT_EQ(call("{'_max()':['$n','plain',3]}"), "{'%long':4}");
    EXPECT_EQ(caller.calls, (Lines{"resolve $n {'%string':'$n'}",
                                   "resolve plain {'%string':'plain'}", "set $n {'%long':4}"}));
    EXPECT_EQ(call("{'_min()':[3,'plain']}"), "{'%long':2}");
    EXPECT_EQ(caller.calls, Lines{"resolve plain {'%string':'plain'}"});
    EXPECT_EQ(call("{'_min()':['@m',{'%uint':3}]}", true, false), "{'%ulong':3}");
    EXPECT_EQ(caller.calls, Lines{"resolve @m {'%string':'@m'}"});
    EXPECT_EQ(call("{'_max()':['$n',1]}", false, true), "{'%long':0} 101 eval_min_max");
    EXPECT_EQ(caller.calls, Lines{});
}

TEST_F(ExpressionCalls, UnsetVariablesAreNeutralWhereverTheyStand) {
    EXPECT_EQ(call("{'_min()':[3,'@@x']}"), "{'%long':3}");
    EXPECT_EQ(call("{'_max()':[-3,'x']}"), "{'%long':-3}");
    EXPECT_EQ(call("{'_max()':['x',-3]}"), "{'%long':-3}");
    EXPECT_EQ(caller.calls, (Lines{"resolve x {'%string':'x'}", "set x {'%long':-3}"}));
    // The neutral value is a signed one.
    EXPECT_EQ(call("{'_max()':[{'%uint':3},'y']}"), "{'%ulong':3} 101 eval_min_max");
    EXPECT_EQ(call("{'_max()':['y',{'%uint':3}]}"),
              "{'%long':-9223372036854775808} 101 eval_min_max");
    EXPECT_EQ(caller.calls,
              (Lines{"resolve y {'%string':'y'}", "set y {'%long':-9223372036854775808}"}));
}

// What was reached is stored when the walk fails too.
TEST_F(ExpressionCalls, AFailedExtremeStoresWhatWasReached) {
    EXPECT_EQ(call("{'_max()':['$n',true,9]}"), "{'%long':4} 101 eval_min_max");
    EXPECT_EQ(caller.calls, (Lines{"resolve $n {'%string':'$n'}", "set $n {'%long':4}"}));
    EXPECT_EQ(call("{'_max()':['$s',9]}"), "{'%long':0} 101 eval_min_max");
    EXPECT_EQ(caller.calls, (Lines{"resolve $s {'%string':'$s'}", "set $s {'%long':0}"}));
}

TEST_F(ExpressionCalls, InnerExpressionsComeFirstInTheirOrder) {
    EXPECT_EQ(call("{'_add()':[{'_incr()':['$n']},{'_incr()':['$n']},'$n']}"), "{'%long':15}");
    EXPECT_EQ(caller.calls, (Lines{"resolve $n {'%string':'$n'}", "set $n {'%long':5}",
                                   "resolve $n {'%string':'$n'}", "set $n {'%long':6}",
                                   "resolve $n {'%string':'$n'}"}));
    EXPECT_EQ(call("{'_map()':[{'_tostring()':['x',{'_add()':[1,1]}]},'x2',{'_key()':['@uri']}]}"),
              "{'%string':'1'}");
}

// The result of an inner function is an argument like a literal.
TEST_F(ExpressionCalls, AResultMayBeAReference) {
    EXPECT_EQ(call("{'_add()':[{'_tostring()':['$','$']},1]}"), "{'%long':0} 101 eval_math");
    EXPECT_EQ(caller.calls, (Lines{"resolve $ {'%string':'$'}", "resolve $ {'%string':'$'}",
                                   "resolve $$ {'%string':'$$'}"}));
    EXPECT_EQ(call("{'_add()':[{'_tostring()':['pl','ain']},1]}"), "{'%long':3}");
}

TEST_F(ExpressionCalls, ExpressionsInOtherObjectsAreComputedToo) {
    const std::string text =
        json("{'%vlist':[{'_incr()':['$n']},{'_nlist':1},{'a':{'_add()':['$n']}}]}");
    const oru::test::Context ctx(oru_do_json_parse_allow_expr(
        text.data(), size_of(text), 0, Caller::resolve, Caller::store, &caller));
    ASSERT_EQ(ctx->completed_type, 0x800103);
    auto *list = static_cast<ORUDoVlist *>(ctx->completed_obj);
    EXPECT_EQ(shown(oru_do_vlist_get_value(list, 0)), "{'%long':4}");
    EXPECT_EQ(caller.calls, (Lines{"resolve $n {'%string':'$n'}", "set $n {'%long':5}",
                                   "resolve $n {'%string':'$n'}"}));
    EXPECT_EQ(ctx->resolve_fn, Caller::resolve);
    EXPECT_EQ(ctx->set_fn, Caller::store);
    EXPECT_EQ(ctx->user, &caller);
}

TEST_F(ExpressionCalls, ADirectCallOverwritesTheError) {
    using List = Owned<ORUDoVlist, oru_do_vlist_deref>;
    const List list(oru_do_vlist_new());
    oru_do_vlist_add_string(list.get(), "$s");
    ORUDoError *const earlier = oru_do_error_new(1, "earlier");
    ORUDoError *error = earlier;
    const Value value(oru_do_json_eval_expr_internal(0x1000001, list.get(), Caller::resolve,
                                                     Caller::store, &caller, &error));
    EXPECT_NE(error, earlier);
    oru_do_error_deref(earlier);
    EXPECT_EQ(with_error(value, error), "{'%long':0} 101 eval_math");
    // Without an error it stays.
    error = nullptr;
    const Value text(oru_do_json_eval_expr_internal(0x1000009, list.get(), Caller::resolve,
                                                    Caller::store, &caller, &error));
    EXPECT_EQ(with_error(text, error), "{'%string':'b'}");
}

// Who resolves a reference may read another text for it.
TEST_F(ExpressionCalls, AReferenceMayStandForAnotherExpression) {
    const auto resolve = [](void *user, const char *, ORUDoValue *) {
        const std::string inner = json("{'_tostring()':['in\\n',{'_add()':[1,1]}]}");
        ++*static_cast<int *>(user);
        return oru_do_json_eval_expr(inner.data(), size_of(inner), nullptr, nullptr, nullptr,
                                     nullptr);
    };
    const std::string text = json("{'_tostring()':['$a','\\t','$b']}");
    const std::string whole = "{'%string':'in\\n2\\tin\\n2'}";
    uint64_t nth = 0;
    for (bool met = true; met; ++nth) {
        int asked = 0;
        ORUDoError *error = nullptr;
        poolheap_fail_nth(nth, 0);
        const Value value(
            oru_do_json_eval_expr(text.data(), size_of(text), resolve, nullptr, &asked, &error));
        poolheap_fail_off();
        met = nth == 0 || poolheap_fail_hits() > 0;
        const Error owned(error);
        if (!met || nth == 0) {
            EXPECT_EQ(shown(value.get()), whole);
            EXPECT_EQ(asked, 2);
        }
    }
    EXPECT_GT(nth, 40u);
}

// ---- Bounds ----

std::string nested_sums(int levels) {
    std::string text;
    for (int i = 0; i < levels; ++i)
        text += "{'_add()':[1,";
    text += "0";
    for (int i = 0; i < levels; ++i)
        text += "]}";
    return text;
}

// Two brackets a sum, a thousand brackets in all.
TEST_F(ExpressionCalls, SumsNestToAThousandBrackets) {
    EXPECT_EQ(call(nested_sums(499)), "{'%long':499}");
    EXPECT_EQ(call(nested_sums(500)), "{'%long':500}");
    EXPECT_EQ(call(nested_sums(501)), "{'%long':500} 1 ");
    EXPECT_EQ(call(nested_sums(100000)), "{'%long':500} 1 ");
}

// ---- What ends the process ----

TEST_F(ExpressionCalls, EveryDivisionByZeroEndsTheProcess) {
    for (const char *function : {"_div", "_mod"}) {
        for (const char *arguments : {"1,0", "0,0", "{'%uint':1},0", "1,2,0", "1,{'%ulong':0}",
                                      "{'_sub()':[1,1]},{'_sub()':[1,1]}"}) {
            const std::string text =
                "{'" + std::string(function) + "()':[" + std::string(arguments) + "]}";
            EXPECT_DEATH(call(text), "") << text;
        }
        EXPECT_DEATH(
            call("{'" + std::string(function) + "()':[{'%long':-9223372036854775808},-1]}"), "");
    }
    // A first 0 is no divisor, nor is the lowest number, and unsigned there is no -1.
    EXPECT_EQ(call("{'_div()':[0,5]}"), "{'%long':0}");
    EXPECT_EQ(call("{'_div()':[-1,{'%long':-9223372036854775808}]}"), "{'%long':0}");
    EXPECT_EQ(call("{'_div()':[{'%ulong':9223372036854775808},-1]}"), "{'%ulong':0}");
    EXPECT_EQ(call("{'_div()':['x',0]}"), "{'%long':0} 101 eval_math");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(ExpressionCalls, ADivisionByZeroIsTheProcessorsFault) {
    EXPECT_EXIT(call("{'_div()':[1,0]}"), testing::KilledBySignal(SIGFPE), "");
    EXPECT_EXIT(call("{'_mod()':[{'%uint':1},0]}"), testing::KilledBySignal(SIGFPE), "");
    EXPECT_EXIT(call("{'_mod()':[{'%long':-9223372036854775808},-1]}"),
                testing::KilledBySignal(SIGFPE), "");
}
#endif

TEST_F(ExpressionCalls, AUriThatFindsNoRoomEndsTheProcess) {
    const std::string name(63, 'n');
    EXPECT_EQ(call("{'_key()':[{'%mr_uri':'/" + name + ";k=1'}]}"), "{'%string':'1'}");
    EXPECT_FATAL(call("{'_key()':[{'%mr_uri':'/" + name + "n;k=1'}]}"),
                 "Not enough room for ref-name 64 64 /" + name + "n;k=1");
    std::string ten;
    for (int i = 0; i < 10; ++i)
        ten += "/s;k=" + std::to_string(i);
    EXPECT_EQ(call("{'_key()':[{'%mr_uri':'" + ten + "'}]}"), "{'%string':'9'}");
    EXPECT_EQ(call("{'_key()':[{'%mr_uri':'" + ten + "'},'k',3]}"), "{'%string':'3'}");
    EXPECT_FATAL(call("{'_key()':[{'%mr_uri':'" + ten + "/s;k=10'}]}"),
                 "Insufficient URI MAX segments: '" + ten +
                     "/s;k=10'Increase URI_MAX_SEGMENTS "
                     "11/10");
}

// ---- Memory ----

// Whatever allocation fails: the result is the same, or an error tells of it.
TEST_F(ExpressionCalls, WhatIsLostIsTold) {
    for (const char *text : {
             "{'_add()':[1,'$n',{'_mult()':[2,3]}]}",
             "{'_sub()':['@m',{'%uint':1}]}",
             "{'_incr()':['$n']}",
             "{'_decr()':[{'_incr()':['plain']}]}",
             "{'_map()':['$s','a',1,'b',{'%string':'long enough to need a block of its own'}]}",
             "{'_map()':['c','a',1,{'_tostring()':['x']}]}",
             "{'_tostring()':['$n','escaped\\n',1,2.5,true,{'%mr_uri':'/a;x=1'}]}",
             "{'_key()':['@uri','k',0]}",
             "{'_key()':[{'%mr_uri':'/a;x=1/b;y=2'}]}",
             "{'_min()':['unset','$n',3]}",
             "{'_max()':['$n',{'_add()':[1,1]}]}",
         }) {
        caller = {};
        caller.variables.set("$n", "{'%int':4}");
        caller.variables.set("@m", "{'%uint':9}");
        caller.variables.set("plain", "{'%int':2}");
        caller.variables.set("$s", "{'%string':'b'}");
        caller.variables.set("@uri", "{'%mr_uri':'/a;k=1'}");
        const std::string whole = call(text, true, false);
        ASSERT_EQ(whole.find("} "), whole.npos) << whole;
        uint64_t nth = 1;
        for (bool met = true; met; ++nth) {
            ASSERT_LT(nth, 1000u);
            const std::string expression = json(text);
            const auto resolve = [](void *user, const char *name, ORUDoValue *default_value) {
                return oru::test::Variables::resolve(user, name, default_value);
            };
            ORUDoError *error = nullptr;
            poolheap_fail_nth(nth, 0);
            Value value(oru_do_json_eval_expr(expression.data(), size_of(expression), resolve,
                                              nullptr, &caller.variables, &error));
            poolheap_fail_off();
            met = poolheap_fail_hits() > 0;
            const Error owned(error);
            const std::string made = value != nullptr ? shown(value.get()) : "none";
            // Without a context there is nothing to tell it with.
            EXPECT_TRUE(made == whole || error != nullptr || nth == 1)
                << text << " at " << nth << ": " << made;
        }
        EXPECT_GT(nth, 8u) << text;
    }
}

}  // namespace
