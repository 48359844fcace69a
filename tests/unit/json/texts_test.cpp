// Texts of all sorts from files: y_ are read, n_ fail, and of i_, where texts say little or readers
// differ, the table below tells what becomes of them. The name of a file goes on with the kind that
// is read, or, of n_, with the code of the failure, whatever is expected.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <vector>

#include "oru/json.h"
#include "tests/unit/json/kinds.h"
#include "tests/unit/json/support.h"

namespace oru::test {
namespace {

// ---- The files ----

// The names of the files that begin so, without their endings.
std::vector<std::string> texts(const std::string &beginning) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(ORU_JSON_TEXTS_DIR)) {
        const std::string name = entry.path().stem().string();
        if (name.starts_with(beginning))
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string text_of(const std::string &name) {
    std::ifstream in(ORU_JSON_TEXTS_DIR "/" + name + ".json", std::ios::binary);
    EXPECT_TRUE(in.is_open()) << name;
    std::stringstream all;
    all << in.rdbuf();
    return all.str();
}

// The word in front of the two underlines, or in front of the first, behind the letter.
std::string word_of(const std::string &name, const char *end) {
    return name.substr(2, name.find(end, 2) - 2);
}

const Kind &kind_of(const std::string &name) {
    const Kind *kind = kind_named(word_of(name, "__"));
    EXPECT_NE(kind, nullptr) << name;
    return *kind;
}

// Nothing, a value, properties, a list, a table, operations, a tree.
constexpr int64_t kExpected[] = {0, 0x10000, 0x400100, 0x800103, 0x80010F, 0x800106, 0x400119};

// The code of what goes wrong in a text, which stands in a block of just its size.
int32_t code_in(const std::string &text, size_t size, int64_t expected) {
    const std::unique_ptr<char[]> block(new char[size]);
    text.copy(block.get(), size);
    return code_of(Context(oru_do_json_parse(block.get(), static_cast<int32_t>(size), expected)));
}

// ---- The outcomes of i_ ----

struct Outcome {
    const char *name;
    const char *again;  // the object, written, or that there is none
};

constexpr Outcome kOutcomes[] = {
    {"i_value__empty_text", "no object"},
    {"i_value__blanks_only", "no object"},
    {"i_value__comment_only", "no object"},
    {"i_value__comment_not_closed", "no object"},
    {"i_value__slash_alone", "no object"},
    {"i_value__blank_form_feed", R"({"%string":"x"})"},
    {"i_value__blank_vertical_tab", R"({"%string":"x"})"},
    {"i_value__array_empty", "no object"},
    {"i_value__array_of_one", R"({"%long":1})"},
    {"i_value__array_of_two", R"({"%long":2})"},
    {"i_value__array_nested", R"({"%string":"x"})"},
    {"i_value__array_of_arrays",
     R"({"%array":[{"%int":1},{"%string":"x"},{"%array":[{"%int":2},null]}]})"},
    {"i_value__array_of_objects", R"({"%array":[{"%string":"a"},null]})"},
    {"i_value__number_behind_number", R"({"%long":1})"},
    {"i_value__object_empty", "no object"},
    {"i_value__object_without_tag", "no object"},
    {"i_properties__object_empty", "no object, code 4"},
    {"i_properties__of_other_type", "no object"},
    {"i_properties__keys_twice", R"({"%properties":{"a":{"%int":1},"b":{"%int":2}}})"},
    {"i_nvlist__keys_twice", R"({"%nvlist":{"a":{"%int":1},"b":{"%int":2},"a":{"%int":3}}})"},
    {"i_error__keys_twice", R"({"%error":{"code":1,"msg":"first"}})"},
    {"i_error__keys_begun", R"({"%error":{"code":5,"msg":"x"}})"},
    {"i_value__tag_twice", R"({"%int":1})"},
    {"i_value__tag_twice_other", R"({"%int":1})"},
    {"i_value__tag_behind_a_key", R"({"%int":5})"},
    {"i_value__typedef_first", "no object"},
    {"i_value__typedef_twice", R"({"%string":"x","%typedef":"B"})"},
    {"i_value__typedef_number", R"({"%string":"x"})"},
    {"i_value__key_beside_tag", R"({"%int":1})"},
    {"i_properties__key_of_zero", R"({"%properties":{"a":{"%int":1}}})"},
    {"i_value__number_behind_integers", R"({"%long":-9223372036854775808})"},
    {"i_value__number_most_unsigned", R"({"%long":-1})"},
    {"i_value__number_past_unsigned", "no object"},
    {"i_value__number_past_least", "no object"},
    {"i_value__number_thirty_digits", "no object"},
    {"i_value__number_thousand_digits", "no object"},
    {"i_value__number_exponent_without_point", R"({"%long":1})"},
    {"i_value__number_huge_exponent_without_point", R"({"%long":1})"},
    {"i_value__number_huge_exponent", "no object"},
    {"i_value__number_tiny_exponent", "no object"},
    {"i_value__number_minus_zero", R"({"%long":0})"},
    {"i_value__number_minus_zero_real", R"({"%double":-0})"},
    {"i_value__number_many_decimals", R"({"%double":0.333333})"},
    {"i_value__number_long_real", R"({"%double":1.11111e+299})"},
    {"i_value__number_cut_to_byte", R"({"%byte":1})"},
    {"i_value__number_cut_to_unsigned", R"({"%uint":4294967295})"},
    {"i_value__tag_with_zero", R"({"%int":1})"},
    {"i_value__null_for_boolean", R"({"%boolean":false})"},
    {"i_properties__number_past_int", R"({"%properties":{"a":{"%int":0}}})"},
    {"i_properties__number_dropped", R"({"%properties":{"a":null,"b":{"%int":1}}})"},
    {"i_value__string_lone_high", R"({"%string":"?"})"},
    {"i_value__string_lone_high_then_text", R"({"%string":"?xy"})"},
    {"i_value__string_two_highs", "{\"%string\":\"\xf0\x90\x80\x80\"}"},
    {"i_value__string_high_then_letter", "{\"%string\":\"\xf0\x90\x81\x81\"}"},
    {"i_value__string_for_uri", R"({"%mr_uri":""})"},
    {"i_value__utf8_overlong", "{\"%string\":\"\xc0\xaf\"}"},
    {"i_value__utf8_surrogate", "{\"%string\":\"\xed\xa0\x80\"}"},
    {"i_value__utf8_past_the_last", "{\"%string\":\"\xf4\x90\x80\x80\"}"},
    {"i_value__utf8_bom_within", "{\"%string\":\"\xef\xbb\xbfx\"}"},
    {"i_value__string_lone_low", "{\"%string\":\"\xed\xb0\x80\"}"},
    {"i_value__null_for_text", "null"},
    {"i_value__number_for_text", "null"},
    {"i_value__hex_odd", R"({"%hex_binary":"AB"})"},
    {"i_value__cut_string", "no object"},
    {"i_value__cut_literal", "no object"},
    {"i_value__cut_number", "no object"},
    {"i_value__cut_object", "no object"},
    {"i_value__cut_array", R"({"%long":1})"},
    {"i_value__cut_escape", "no object"},
    {"i_value__cut_utf8", "no object"},
    {"i_value__garbage_behind", R"({"%string":"x"})"},
    {"i_value__bom_behind", R"({"%string":"x"})"},
    {"i_properties__garbage_behind", R"({"%properties":{"a":{"%int":1}}})"},
    {"i_dtree__children_first", R"({"%dtree":{"name":"r"}})"},
    {"i_dtree__children_bare", R"({"%dtree":{"name":"r"}})"},
    {"i_dtree__without_name", "no object"},
    {"i_vtable__tagged_row", R"({"%vtable":[{"%int":[2]}]})"},
    {"i_vtable__no_rows", R"({"%vtable":[]})"},
    {"i_config_ops__compact_properties", R"({"%config_ops":[]})"},
    {"i_properties__array_around", R"({"%properties":{"a":{"%int":1},"b":{"%string":"x"}}})"},
    {"i_properties__array_in_untagged", R"({"%properties":{"a":{"%int":5},"b":{"%int":1}}})"},
    {"i_properties__array_in_untagged_first",
     R"({"%properties":{"a":{"%string":"x"},"b":{"%int":1}}})"},
    {"i_properties_list__array_around",
     R"({"%properties_list":[{"%properties":{"a":{"%int":1},"b":{"%string":"x"}}},{"%properties":{"a":{"%int":1},"b":{"%string":"x"}}}]})"},
    {"i_nvlist__array_around", R"({"%nvlist":{"a":{"%int":1},"a":{"%int":[1,2]}}})"},
    {"i_nlist__array_around", R"({"%nlist":["a","b"]})"},
    {"i_vlist__array_around", R"({"%array":[{"%int":1},{"%int":[2,3]}]})"},
    {"i_vtable__array_around", R"({"%vtable":[{"%int":[1]},[2]]})"},
    {"i_value__array_around",
     R"({"%sequence":{"a":{"%int":1},"b":{"%choice":{"c":{"%string":"x"}}}}})"},
    {"i_value__array_around_array", R"({"%array":[{"%int":1},{"%string":"x"}]})"},
    {"i_value__array_around_text", R"({"%string":"a\n","%typedef":"T\n"})"},
    {"i_error__array_around",
     R"({"%error":{"code":1,"msg":"m","namespace":"n","cause":{"%error":{"code":2,"msg":"c"}},"prop_errs":{"%prop_errs":{"p":{"%error":{"code":3,"msg":"q"}}}}}})"},
    {"i_prop_errs__array_around",
     R"({"%prop_errs":{"p":{"%error":{"code":1,"msg":"m","namespace":"n","cause":{"%error":{"code":2,"msg":"c"}},"prop_errs":{"%prop_errs":{"p":{"%error":{"code":3,"msg":"q"}}}}}}}})"},
    {"i_event__array_around",
     R"({"%event":{"name":"e","mr_uri":"/a","time":1,"sev":2,"info":{"%properties":{"a":{"%int":1},"b":{"%string":"x"}}}}})"},
    {"i_config_ops__array_around",
     R"({"%config_ops":[{"mr_uri":"/a","op_code":1,"props":{"%properties":{"a":{"%int":1},"b":{"%string":"x"}}}}]})"},
    {"i_dtree__array_around",
     R"({"%dtree":{"name":"r","err":{"%error":{"code":1,"msg":"m","namespace":"n","cause":{"%error":{"code":2,"msg":"c"}},"prop_errs":{"%prop_errs":{"p":{"%error":{"code":3,"msg":"q"}}}}}},"props":{"%properties":{"a":{"%int":1},"b":{"%string":"x"}}}}})"},
    {"i_typedef_meta__array_around",
     R"({"%typedef_meta":{"name":"N","enum":{"%nvlist":{"up":{"%int":1}}}}})"},
    {"i_ntlist__array_around",
     R"({"%ntlist":{"a":{"%typedef_meta":{"name":"N","enum":{"%nvlist":{"up":{"%int":1}}}}}}})"},
    {"i_constraint_list__array_around",
     R"t({"%constraint_list":[{"%constraint":{"constraint_str":"values(1)"}}]})t"},
};

// ---- Tests ----

class ValidTexts : public testing::TestWithParam<std::string> {};
class InvalidTexts : public testing::TestWithParam<std::string> {};

TEST_P(ValidTexts, AreRead) {
    const std::string text = text_of(GetParam());
    const Kind &kind = kind_of(GetParam());
    ORUDoError *err = nullptr;
    void *object = kind.read(text.data(), size_of(text), &err);
    EXPECT_EQ(err, nullptr);
    oru_do_error_deref(err);
    ASSERT_NE(object, nullptr);
    kind.release(object);
}

TEST_P(ValidTexts, AreJsonWhateverIsExpected) {
    const std::string text = text_of(GetParam());
    for (const int64_t expected : kExpected)
        EXPECT_NE(code_in(text, text.size(), expected), ORU_JSON_ERR_PARSE) << expected;
}

// A text that ends too early is none that is wrong.
TEST_P(ValidTexts, MayEndAnywhere) {
    const std::string text = text_of(GetParam());
    const size_t step = text.size() < 3000 ? 1 : 97;
    for (size_t size = 0; size < text.size(); size += step) {
        for (const int64_t expected : kExpected)
            EXPECT_NE(code_in(text, size, expected), ORU_JSON_ERR_PARSE) << size;
    }
}

TEST_P(InvalidTexts, FailWithTheirCodeWhateverIsExpected) {
    const std::string text = text_of(GetParam());
    const int32_t code = std::stoi(word_of(GetParam(), "_"));
    for (const int64_t expected : kExpected)
        EXPECT_EQ(code_in(text, text.size(), expected), code) << expected;
}

TEST(OtherTexts, BecomeWhatTheTableTells) {
    std::vector<std::string> told;
    for (const Outcome &outcome : kOutcomes) {
        EXPECT_EQ(written_again(kind_of(outcome.name), text_of(outcome.name), 0), outcome.again)
            << outcome.name;
        told.push_back(outcome.name);
    }
    std::sort(told.begin(), told.end());
    EXPECT_EQ(told, texts("i_"));
}

TEST(JsonTexts, AreValidInvalidOrOfTheTable) {
    EXPECT_EQ(texts("").size(), texts("y_").size() + texts("n_").size() + texts("i_").size());
}

std::string test_name(const testing::TestParamInfo<std::string> &info) {
    return info.param;
}

INSTANTIATE_TEST_SUITE_P(Files, ValidTexts, testing::ValuesIn(texts("y_")), test_name);
INSTANTIATE_TEST_SUITE_P(Files, InvalidTexts, testing::ValuesIn(texts("n_")), test_name);

}  // namespace
}  // namespace oru::test
