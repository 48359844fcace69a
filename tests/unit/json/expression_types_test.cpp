// Each function of expressions with arguments of each type.
#include <string>

#include "tests/unit/json/expression_support.h"

namespace {

class ExpressionTypes : public oru::test::Expression {};

// An argument, the number that it counts as, if it is one, and its text.
struct Kind {
    const char *argument;
    const char *number;
    const char *text;
};

constexpr Kind kKinds[] = {
    {"-7", "{'%long':-7}", "-7"},
    {"{'%ubyte':200}", "{'%ulong':200}", "200"},
    {"{'%byte':-5}", "{'%long':-5}", "-5"},
    {"{'%ushort':60000}", "{'%ulong':60000}", "60000"},
    {"{'%short':-300}", "{'%long':-300}", "-300"},
    {"{'%uint':4000000000}", "{'%ulong':4000000000}", "4000000000"},
    {"{'%int':-7}", "{'%long':-7}", "-7"},
    {"{'%ulong':18446744073709551615}", "{'%ulong':18446744073709551615}", "18446744073709551615"},
    {"{'%long':-9223372036854775808}", "{'%long':-9223372036854775808}", "-9223372036854775808"},
    {"{'%datetime':-12}", "{'%long':-12}", "-12"},
    {"{'%duration':13}", "{'%long':13}", "13"},
    {"'x'", nullptr, "x"},
    {"{'%string':'x','%typedef':'T'}", nullptr, "x"},
    {"true", nullptr, "true"},
    {"{'%boolean':false}", nullptr, "false"},
    {"2.5", nullptr, "2.5"},
    {"{'%float':0.5}", nullptr, "0.5"},
    {"{'%double':1e+100}", nullptr, "1e+100"},
    {"{'%any_uri':'/a'}", nullptr, "/a"},
    {"{'%mr_uri':'/m'}", nullptr, "/m"},
    {"{'%coll_uri':'/c?de'}", nullptr, "/c?de"},
    {"{'%hex_binary':'AB01'}", nullptr, "AB01"},
    {"{'%ip_address':'7F000001'}", nullptr, "127.0.0.1"},
    {"{'%nsap_address':'490001AA'}", nullptr, "49.0001.AA"},
    {"{'%enumeration':'up'}", nullptr, "up"},
    {"{'%choice':{'a':{'%int':1}}}", nullptr, "{a : 1}"},
    {"{'%sequence':{'a':{'%int':1},'b':{'%string':'y'}}}", nullptr, "{a : 1, b : y}"},
    {"{'%int':[1,2]}", nullptr, "[\\n\\t1,\\n\\t2\\n]\\n"},
    {"{'%array':[]}", nullptr, "[\\n]\\n"},
    {"{'%bits':[{'%string':'a'}]}", nullptr, "[\\n\\ta\\n]\\n"},
};

// What gives a null value as argument: nulls, and objects that are no values.
constexpr const char *kNulls[] = {"null", "{'%null':1}", "{'%nlist':['a']}",
                                  "{'%properties':{'a':1}}", "{'%string':null}"};

std::string call(const std::string &function, const std::string &arguments) {
    return "{'" + function + "()':[" + arguments + "]}";
}

std::string number_or(const Kind &kind, const char *failure) {
    return kind.number != nullptr ? kind.number : failure;
}

TEST_F(ExpressionTypes, ArithmeticTakesWholeNumbersDatesAndDurations) {
    for (const Kind &kind : kKinds) {
        const std::string argument = kind.argument;
        const std::string expected = number_or(kind, "{'%long':0} 101 eval_math");
        for (const char *function : {"_add", "_sub", "_mult", "_div", "_mod"})
            EXPECT_EQ(eval_alone(call(function, argument)), expected) << function << argument;
        EXPECT_EQ(eval_alone(call("_add", argument + ",0")), expected) << argument;
        EXPECT_EQ(eval_alone(call("_sub", argument + ",0")), expected) << argument;
        EXPECT_EQ(eval_alone(call("_mult", argument + ",1")), expected) << argument;
        EXPECT_EQ(eval_alone(call("_div", argument + ",1")), expected) << argument;
    }
}

TEST_F(ExpressionTypes, ArithmeticEndsAtWhatIsNoNumber) {
    for (const Kind &kind : kKinds) {
        if (kind.number != nullptr)
            continue;
        for (const char *function : {"_add", "_sub", "_mult", "_div", "_mod"}) {
            EXPECT_EQ(eval_alone(call(function, std::string("5,") + kind.argument + ",2")),
                      "{'%long':5} 101 eval_math")
                << function << kind.argument;
            EXPECT_EQ(eval_alone(call(function, std::string("{'%uint':5},") + kind.argument)),
                      "{'%ulong':5} 101 eval_math")
                << function << kind.argument;
        }
    }
}

TEST_F(ExpressionTypes, ArithmeticSkipsNulls) {
    for (const std::string null : kNulls) {
        for (const char *function : {"_add", "_sub", "_mult", "_div", "_mod"}) {
            EXPECT_EQ(eval_alone(call(function, null)), "{'%long':0}") << function << null;
            EXPECT_EQ(eval_alone(call(function, null + ",{'%uint':5}," + null)), "{'%ulong':5}")
                << function << null;
        }
    }
}

// Later operands are taken by their 64 bits.
TEST_F(ExpressionTypes, TheFirstOperandDecidesForAllTypes) {
    EXPECT_EQ(eval_alone(call("_add", "0,{'%ulong':18446744073709551615}")), "{'%long':-1}");
    EXPECT_EQ(eval_alone(call("_add", "{'%ubyte':0},{'%byte':-1}")),
              "{'%ulong':18446744073709551615}");
    EXPECT_EQ(eval_alone(call("_div", "-6,{'%uint':2}")), "{'%long':-3}");
    EXPECT_EQ(eval_alone(call("_div", "{'%uint':6},-1")), "{'%ulong':0}");
    EXPECT_EQ(eval_alone(call("_mod", "-7,{'%uint':4}")), "{'%long':-3}");
    EXPECT_EQ(eval_alone(call("_mod", "{'%ushort':7},{'%duration':4}")), "{'%ulong':3}");
    EXPECT_EQ(eval_alone(call("_sub", "{'%datetime':5},{'%ubyte':7}")), "{'%long':-2}");
    EXPECT_EQ(eval_alone(call("_mult", "{'%short':-3},{'%ulong':3}")), "{'%long':-9}");
}

TEST_F(ExpressionTypes, StepsGiveANumberBack) {
    for (const Kind &kind : kKinds) {
        const std::string expected = number_or(kind, "{'%long':0} 101 eval_incr_decr");
        for (const char *function : {"_incr", "_decr"}) {
            EXPECT_EQ(eval_alone(call(function, kind.argument)), expected) << kind.argument;
            // Only the first argument counts.
            EXPECT_EQ(eval_alone(call(function, std::string(kind.argument) + ",true")), expected);
        }
    }
    for (const char *null : kNulls) {
        EXPECT_EQ(eval_alone(call("_incr", null)), "{'%long':0} 101 eval_incr_decr") << null;
        EXPECT_EQ(eval_alone(call("_decr", null)), "{'%long':0} 101 eval_incr_decr") << null;
    }
}

TEST_F(ExpressionTypes, StepsStoreInTheFormOfTheVariable) {
    const struct {
        const char *before;
        const char *more;
        const char *less;
    } rows[] = {
        {"{'%ubyte':255}", "{'%ulong':256}", "{'%ulong':254}"},
        {"{'%byte':-1}", "{'%long':0}", "{'%long':-2}"},
        {"{'%ushort':1}", "{'%ulong':2}", "{'%ulong':0}"},
        {"{'%short':1}", "{'%long':2}", "{'%long':0}"},
        {"{'%uint':1}", "{'%ulong':2}", "{'%ulong':0}"},
        {"{'%int':1}", "{'%long':2}", "{'%long':0}"},
        {"{'%ulong':18446744073709551615}", "{'%ulong':0}", "{'%ulong':18446744073709551614}"},
        {"{'%long':9223372036854775807}", "{'%long':-9223372036854775808}",
         "{'%long':9223372036854775806}"},
        {"{'%datetime':7}", "{'%long':8}", "{'%long':6}"},
        {"{'%duration':7}", "{'%long':8}", "{'%long':6}"},
    };
    for (const auto &row : rows) {
        variables.set("v", row.before);
        eval(call("_incr", "'v'"));
        EXPECT_EQ(variables.get("v"), row.more);
        variables.set("v", row.before);
        eval(call("_decr", "'v'"));
        EXPECT_EQ(variables.get("v"), row.less);
    }
    // What is no number counts as 0.
    for (const Kind &kind : kKinds) {
        if (kind.number != nullptr)
            continue;
        variables.set("v", kind.argument);
        EXPECT_EQ(eval(call("_decr", "'v'")), "{'%long':0} 101 eval_incr_decr") << kind.argument;
        EXPECT_EQ(variables.get("v"), "{'%long':-1}");
    }
}

TEST_F(ExpressionTypes, TheSelectorOfAMapIsAString) {
    for (const Kind &kind : kKinds) {
        const bool is_string = std::string(kind.text) == "x";
        EXPECT_EQ(eval_alone(call("_map", std::string(kind.argument) + ",'x',1,9")),
                  is_string ? "{'%int':1}" : "null 101 eval_map")
            << kind.argument;
    }
    for (const std::string null : kNulls)
        EXPECT_EQ(eval_alone(call("_map", null + ",'x','x',1")), "{'%int':1}") << null;
}

// What a reference stands for may be of any type, and finds a key of that type.
TEST_F(ExpressionTypes, KeysOfAMapMayBeOfAnyType) {
    for (const Kind &kind : kKinds) {
        const std::string argument = kind.argument;
        const bool is_string = std::string(kind.text) == "x";
        EXPECT_EQ(eval_alone(call("_map", "'x'," + argument + ",1,2")),
                  is_string ? "{'%int':1}" : "{'%int':2}")
            << argument;
        if (kind.argument[0] != '{')
            continue;
        variables.set("$v", argument);
        EXPECT_EQ(eval(call("_map", "'$v','no',1," + argument + ",2,3")), "{'%int':2}") << argument;
        EXPECT_EQ(eval(call("_map", "'$v','no',1,3")), "{'%int':3}") << argument;
    }
    EXPECT_EQ(eval_alone(call("_map", "'x',null,1,2")), "{'%int':2}");
}

TEST_F(ExpressionTypes, ResultsOfAMapMayBeOfAnyType) {
    for (const Kind &kind : kKinds) {
        const std::string argument = kind.argument;
        if (argument[0] != '{')
            continue;
        EXPECT_EQ(eval_alone(call("_map", "'x','x'," + argument)), argument);
        EXPECT_EQ(eval_alone(call("_map", "'x','y',1," + argument)), argument);
    }
    EXPECT_EQ(eval_alone(call("_map", "'x','x',null,9")), "null");
    EXPECT_EQ(eval_alone(call("_map", "'x','y',1,null")), "null");
}

TEST_F(ExpressionTypes, TostringTakesTheTextOfEveryType) {
    for (const Kind &kind : kKinds) {
        EXPECT_EQ(eval_alone(call("_tostring", kind.argument)),
                  "{'%string':'" + std::string(kind.text) + "'}")
            << kind.argument;
        EXPECT_EQ(eval_alone(call("_tostring", "'<'," + std::string(kind.argument) + ",'>'")),
                  "{'%string':'<" + std::string(kind.text) + ">'}")
            << kind.argument;
    }
    for (const char *null : kNulls)
        EXPECT_EQ(eval_alone(call("_tostring", null)), "{'%string':''}") << null;
}

TEST_F(ExpressionTypes, KeyTakesUrisOfEachType) {
    for (const char *uri :
         {"{'%any_uri':'/a;k=1'}", "{'%mr_uri':'/a;k=1'}", "{'%coll_uri':'/a;k=1?cd'}"}) {
        EXPECT_EQ(eval_alone(call("_key", uri)), "{'%string':'1'}") << uri;
        EXPECT_EQ(eval_alone(call("_key", std::string(uri) + ",'k'")), "{'%string':'1'}") << uri;
    }
    for (const Kind &kind : kKinds)
        EXPECT_EQ(eval_alone(call("_key", kind.argument)), "null 10002 eval_key") << kind.argument;
    for (const char *null : kNulls)
        EXPECT_EQ(eval_alone(call("_key", null)), "null 10002 eval_key") << null;
}

TEST_F(ExpressionTypes, PositionsOfAKeyAreWholeNumbersOfAnyType) {
    const std::string uri = "{'%mr_uri':'/a;k=1/b;l=2'},";
    for (const char *type : {"ubyte", "byte", "ushort", "short", "uint", "int", "ulong", "long",
                             "datetime", "duration"}) {
        const std::string zero = "{'%" + std::string(type) + "':0}";
        EXPECT_EQ(eval_alone(call("_key", uri + zero)), "{'%string':'2'}") << type;
        EXPECT_EQ(eval_alone(call("_key", uri + zero + "," + zero)), "{'%string':'1'}") << type;
        EXPECT_EQ(eval_alone(call("_key", uri + "'k'," + zero)), "{'%string':'1'}") << type;
    }
    // None of these is the name or the position of a key, or the position of a segment.
    for (const Kind &kind : kKinds) {
        EXPECT_EQ(eval_alone(call("_key", uri + kind.argument)), "null 10002 eval_key")
            << kind.argument;
        EXPECT_EQ(eval_alone(call("_key", uri + "'l'," + kind.argument)), "null 10002 eval_key")
            << kind.argument;
    }
    for (const char *null : kNulls) {
        EXPECT_EQ(eval_alone(call("_key", uri + null)), "null 10002 eval_key") << null;
        EXPECT_EQ(eval_alone(call("_key", uri + "'l'," + null)), "null 10002 eval_key") << null;
    }
}

TEST_F(ExpressionTypes, MinAndMaxTakeWhatArithmeticTakes) {
    for (const Kind &kind : kKinds) {
        const std::string expected = number_or(kind, "{'%long':0} 101 eval_min_max");
        for (const char *function : {"_min", "_max"}) {
            const std::string argument = kind.argument;
            EXPECT_EQ(eval_alone(call(function, argument)), expected) << argument;
            if (kind.number == nullptr) {
                EXPECT_EQ(eval_alone(call(function, "5," + argument + ",4")),
                          "{'%long':5} 101 eval_min_max")
                    << argument;
            }
        }
    }
    for (const char *null : kNulls) {
        EXPECT_EQ(eval_alone(call("_min", null)), "{'%long':0} 101 eval_min_max") << null;
        EXPECT_EQ(eval_alone(call("_max", std::string("5,") + null)),
                  "{'%long':5} 101 eval_min_max");
    }
}

TEST_F(ExpressionTypes, MinAndMaxStayInTheirMode) {
    for (const char *type : {"ubyte", "ushort", "uint", "ulong"}) {
        const std::string five = "{'%" + std::string(type) + "':5}";
        EXPECT_EQ(eval_alone(call("_min", "7," + five)), "{'%long':7} 101 eval_min_max") << type;
        EXPECT_EQ(eval_alone(call("_min", "{'%ulong':7}," + five)), "{'%ulong':5}") << type;
    }
    for (const char *type : {"byte", "short", "int", "long", "datetime", "duration"}) {
        const std::string five = "{'%" + std::string(type) + "':5}";
        EXPECT_EQ(eval_alone(call("_max", "-7," + five)), "{'%long':5}") << type;
        EXPECT_EQ(eval_alone(call("_max", "{'%ubyte':1}," + five)), "{'%ulong':1} 101 eval_min_max")
            << type;
    }
    EXPECT_EQ(eval_alone(call("_min", "{'%ulong':18446744073709551615},{'%ulong':1}")),
              "{'%ulong':1}");
    EXPECT_EQ(eval_alone(call("_min", "1,-1")), "{'%long':-1}");
}

// The brackets of an inner list count as the function's own.
TEST_F(ExpressionTypes, BareListsAreNoArguments) {
    EXPECT_EQ(eval_alone(call("_add", "1,[2,3]")), "{'%long':6} 6 ");
    EXPECT_EQ(eval_alone(call("_add", "[[1]]")), "{'%long':1} 6 ");
}

// An object that nobody knows is left out with its error, not with the function.
TEST_F(ExpressionTypes, UnknownObjectsAreNoArguments) {
    EXPECT_EQ(eval_alone(call("_add", "1,{'%nope':2},3")), "{'%long':4} 8 %nope\":2},3]}");
    EXPECT_EQ(eval_alone(call("_add", "1,{'_nope()':2},3")), "{'%long':4} 8 _nope()\":2},3]}");
    EXPECT_EQ(eval_alone(call("_nope", "1")), "none 8 _nope()\":[1]}");
    // Its brackets make a list of an object without a tag: it is another sum of nothing.
    EXPECT_EQ(eval_alone(call("_add", "1,{'a':2}")), "{'%long':3}");
}

// A key of three characters is no function, whatever it begins and ends with.
TEST_F(ExpressionTypes, NamesOfFunctionsHaveFourCharacters) {
    EXPECT_EQ(eval_alone("{'_a)':1}"), "none");
    EXPECT_EQ(eval_alone("{'_ab)':1}"), "none 8 _ab)\":1}");
    EXPECT_EQ(eval_alone("{'add()':1}"), "none");
    EXPECT_EQ(eval_alone("{'_add(':1}"), "none");
}

}  // namespace
