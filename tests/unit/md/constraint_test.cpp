// Constraints as packages bring them: their texts, conditions and lists.
#include "oru/constraint.h"

#include <oru/prop_meta.h>
#include <oru/strbuf.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

class Constraint : public StoreTest {
  protected:
    void SetUp() override {
        load_lib(resources(resource("M",
                                    "<configData><attribute name='a' type='int'>"
                                    "<assert><condition>b.not_null() and c.is_null()</condition>"
                                    "<constraint>values(1 .. 5) default( 3 )</constraint></assert>"
                                    "<assert><constraint>values(9)</constraint></assert>"
                                    "</attribute></configData>")));
        auto *mr = oru_md_get_mr_meta_by_name("com.lib/M");
        ASSERT_NE(mr, nullptr);
        list = oru_md_get_attr_constraints(mr->cd_attrs);
        conditional = oru_do_constraint_list_get_constraint(list, 0);
        plain = oru_do_constraint_list_get_constraint(list, 1);
    }
    ORUDoConstraintList *list = nullptr;
    ORUDoConstraint *conditional = nullptr;
    ORUDoConstraint *plain = nullptr;
};

std::string printed(ORUDoConstraint *constraint) {
    auto *strbuf = oru_do_strbuf_new();
    oru_do_constraint_to_strbuf(constraint, strbuf);
    std::string text = oru_do_strbuf_to_string(strbuf);
    oru_do_strbuf_deref(strbuf);
    return text;
}

TEST_F(Constraint, TextLosesItsBlanksAndTheConditionKeepsThem) {
    EXPECT_STREQ(oru_do_constraint_get_str(conditional), "values(1..5)default(3)");
    auto *condition = oru_do_constraint_get_condition(conditional);
    ASSERT_NE(condition, nullptr);
    EXPECT_STREQ(oru_do_condition_get_expr(condition), "b.not_null() and c.is_null()");
    EXPECT_EQ(oru_do_constraint_get_condition(plain), nullptr);
}

TEST_F(Constraint, PrintsItsConditionAndItsText) {
    EXPECT_EQ(printed(conditional),
              "Condition: b.not_null() and c.is_null()\nConstraint: values(1..5)default(3)\n");
    EXPECT_EQ(printed(plain), "Constraint: values(9)\n");
    EXPECT_EQ(printed(nullptr), "");
}

TEST_F(Constraint, ListPrintsItsConstraintsInOrder) {
    const std::string both =
        "Condition: b.not_null() and c.is_null()\nConstraint: values(1..5)default(3)\n"
        "Constraint: values(9)\n";
    auto *strbuf = oru_do_strbuf_new();
    oru_do_constraint_list_to_strbuf(nullptr, strbuf);
    EXPECT_STREQ(oru_do_strbuf_to_string(strbuf), "");
    oru_do_constraint_list_to_strbuf(list, strbuf);
    EXPECT_EQ(oru_do_strbuf_to_string(strbuf), both);
    oru_do_strbuf_deref(strbuf);
    char *text = nullptr;
    size_t size = 0;
    std::FILE *stream = open_memstream(&text, &size);
    EXPECT_EQ(oru_do_print_constraint_list(stream, 3, list), 0);
    EXPECT_EQ(oru_do_print_constraint(stream, 3, plain), 0);
    EXPECT_EQ(oru_do_print_constraint(stream, 3, nullptr), 0);
    EXPECT_EQ(oru_do_print_constraint_list(stream, 3, nullptr), 0);
    std::fclose(stream);
    EXPECT_EQ(text, both + "Constraint: values(9)\n");
    std::free(text);
}

TEST_F(Constraint, OutlivesTheStore) {
    oru_do_constraint_ref(conditional);
    auto *condition = oru_do_condition_ref(oru_do_constraint_get_condition(conditional));
    oru_md_free();
    EXPECT_STREQ(oru_do_constraint_get_str(conditional), "values(1..5)default(3)");
    oru_do_constraint_deref(conditional);
    EXPECT_STREQ(oru_do_condition_get_expr(condition), "b.not_null() and c.is_null()");
    oru_do_condition_deref(condition);
}

TEST_F(Constraint, ListAddsFindsWalksAndClears) {
    auto *own = oru_do_constraint_list_new();
    EXPECT_EQ(oru_do_constraint_list_get_len(own), 0);
    EXPECT_EQ(oru_do_constraint_list_get_constraint_unconditional(own), nullptr);
    EXPECT_EQ(oru_do_constraint_list_add(own, conditional), 1);
    EXPECT_EQ(oru_do_constraint_list_get_constraint_unconditional(own), nullptr);
    EXPECT_EQ(oru_do_constraint_list_add(own, plain), 2);
    EXPECT_EQ(oru_do_constraint_list_get_constraint_unconditional(own), plain);
    EXPECT_EQ(oru_do_constraint_list_get_constraint(own, 2), nullptr);
    EXPECT_EQ(oru_do_constraint_list_get_constraint(own, -1), nullptr);
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_constraint_list_iter(own, &iter);
    EXPECT_EQ(iter.coll_type, 5);
    EXPECT_NE(oru_do_constraint_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_constraint_list_get_next(&iter), conditional);
    EXPECT_EQ(oru_do_constraint_list_get_next(&iter), plain);
    EXPECT_EQ(oru_do_constraint_list_has_next(&iter), 0);
    EXPECT_EQ(oru_do_constraint_list_get_next(&iter), nullptr);
    EXPECT_EQ(oru_do_constraint_list_ref(own), own);
    oru_do_constraint_list_deref(own);
    oru_do_constraint_list_clear(own);
    EXPECT_EQ(oru_do_constraint_list_get_len(own), 0);
    EXPECT_EQ(oru_do_constraint_list_add(own, plain), 1);
    oru_do_constraint_list_deref(own);
}

TEST_F(Constraint, NullToTheListIsAnswered) {
    EXPECT_EQ(oru_do_constraint_list_add(nullptr, plain), -1);
    EXPECT_EQ(oru_do_constraint_list_add(list, nullptr), -1);
    EXPECT_EQ(oru_do_constraint_list_get_len(list), 2);
    EXPECT_EQ(oru_do_constraint_list_get_len(nullptr), -1);
    EXPECT_EQ(oru_do_constraint_list_ref(nullptr), nullptr);
    EXPECT_EQ(oru_do_constraint_ref(nullptr), nullptr);
    oru_do_constraint_list_deref(nullptr);
    oru_do_constraint_deref(nullptr);
}

TEST_F(Constraint, NullIsRefusedByName) {
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_constraint_get_str(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_get_condition(nullptr), "constraint");
    EXPECT_ASSERTION(oru_do_constraint_list_get_constraint(nullptr, 0), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_get_constraint_unconditional(nullptr), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_clear(nullptr), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_iter(nullptr, &iter), "list");
    EXPECT_ASSERTION(oru_do_constraint_list_has_next(&iter),
                     "iter->coll_type == DO_COLL_MR_META_LIST");
}

TEST_F(Constraint, WithoutMemoryNothingIsAdded) {
    sweep_oom([this] {
        auto *own = oru_do_constraint_list_new();
        if (own == nullptr)
            return;
        const int32_t length = oru_do_constraint_list_add(own, plain);
        EXPECT_EQ(oru_do_constraint_list_get_len(own), length < 0 ? 0 : 1);
        oru_do_constraint_list_deref(own);
    });
}

}  // namespace
