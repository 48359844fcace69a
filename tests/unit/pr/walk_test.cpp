#include "oru/pr_walk.h"

#include <oruplatform/poolheap.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/pr/pr_support.h"

namespace {

using oru::test::names_in;
using oru::test::Nvlist;
using oru::test::oom_hit;
using oru::test::values_in;
using oru::test::Vlist;
using oru::test::where_of;

using Texts = std::vector<std::string>;
using Keys = std::vector<const char *>;

// The handler reads "mtu" and "speed".
class PrWalk : public oru::test::Request {
  public:
    ~PrWalk() override { forget(); }

    void forget() {
        oru_do_nvlist_deref(std::exchange(out_where, nullptr));
        oru_do_vlist_clear(out_keys.get());
    }
    int32_t from_where(const Nvlist &where, const Keys &keys) {
        forget();
        return get_iter_ctx_from_where_clause(where.get(), static_cast<int32_t>(keys.size()),
                                              keys.data(), out_keys.get(), &out_where);
    }
    int32_t modified(const Nvlist &where) {
        forget();
        return get_modified_where_from_where_clause(ctx, where.get(), &out_where);
    }
    int32_t types(const Keys &keys) {
        forget();
        type = -7;
        return oru_pr_get_iter_ctx_types(ctx, walk.get(), static_cast<int32_t>(keys.size()),
                                         keys.data(), &type, out_keys.get(), &out_where);
    }
    void set_previous_keys() {
        const Vlist keys(oru_do_vlist_new());
        oru_do_vlist_add_int(keys.get(), 8);
        oru_do_vlist_add_int(keys.get(), 9);
        oru_pr_orucore_ctx_set_prev_keys(ctx, keys.get());
    }
    Texts left() { return out_where != nullptr ? names_in(out_where) : Texts{"none"}; }
    Texts keys_found() { return values_in(out_keys.get()); }

    Vlist out_keys{oru_do_vlist_new()};
    ORUDoNvlist *out_where = nullptr;
    int32_t type = -7;
};

const Texts kNone{"none"};

// ---- Positions in where clauses ----

TEST_F(PrWalk, AWhereClauseThatComparesAsTheKeysGivesTheirPosition) {
    const Nvlist where = where_of({{"a >", 1}, {"b >", 2}, {"mtu =", 3}, {"c", 4}});
    EXPECT_EQ(from_where(where, {"a >", "b >"}), 1);
    EXPECT_EQ(keys_found(), (Texts{"1", "2"}));
    EXPECT_EQ(left(), (Texts{"mtu =", "c"}));
    EXPECT_EQ(oru_do_vlist_get_value(out_keys.get(), 0),
              oru_do_nvlist_get_value(where.get(), "a >"));
    EXPECT_EQ(oru_do_nvlist_get_value(out_where, "c"), oru_do_nvlist_get_value(where.get(), "c"));
    EXPECT_EQ(oru_do_nvlist_get_len(where.get()), 4);
}

TEST_F(PrWalk, LeadingKeysCompareWithoutTheirLastCharacter) {
    EXPECT_EQ(from_where(where_of({{"a >=", 1}, {"b >", 2}}), {"a >", "b >"}), 1);
    EXPECT_EQ(keys_found(), (Texts{"1", "2"}));
    EXPECT_EQ(left(), Texts{});
    EXPECT_EQ(from_where(where_of({{"a <", 1}, {"b >", 2}}), {"a >", "b >"}), 1);
}

TEST_F(PrWalk, AnotherComparisonOfTheLastKeyIsTypeTwo) {
    EXPECT_EQ(from_where(where_of({{"a >=", 5}, {"x", 6}}), {"a >"}), 2);
    EXPECT_EQ(keys_found(), Texts{"5"});
    EXPECT_EQ(left(), Texts{"x"});
    EXPECT_EQ(from_where(where_of({{"a <", 5}}), {"a >"}), 2);
    // The key's text in front of more is no equality.
    EXPECT_EQ(from_where(where_of({{"a >", 5}}), {"a >="}), 2);
}

TEST_F(PrWalk, AnotherLastKeyLeavesEverythingAsItIs) {
    EXPECT_EQ(from_where(where_of({{"z >", 5}}), {"a >"}), 0);
    EXPECT_EQ(keys_found(), Texts{});
    EXPECT_EQ(left(), kNone);
    EXPECT_EQ(from_where(where_of({{"a >", 4}, {"z >", 5}}), {"a >", "b >"}), 0);
    EXPECT_EQ(keys_found(), Texts{"4"});
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, AnotherLeadingKeyGivesNullValues) {
    EXPECT_EQ(from_where(where_of({{"a >", 1}, {"z >", 2}, {"c >", 3}}), {"a >", "b >", "c >"}), 0);
    EXPECT_EQ(keys_found(), (Texts{"null", "null", "null"}));
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, AWhereClauseShorterThanTheKeysGivesNullValues) {
    EXPECT_EQ(from_where(where_of({{"a >", 1}}), {"a >", "b >"}), 0);
    EXPECT_EQ(keys_found(), (Texts{"null", "null"}));
    EXPECT_EQ(from_where(where_of({{"a >", 1}}), {"a >", "b >", "c >"}), 0);
    EXPECT_EQ(keys_found(), (Texts{"null", "null", "null"}));
    EXPECT_EQ(from_where(where_of({}), {"a >"}), 0);
    EXPECT_EQ(keys_found(), Texts{"null"});
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, WithoutKeysThereIsNoPosition) {
    const Nvlist where = where_of({{"a >", 1}});
    oru_do_vlist_add_int(out_keys.get(), 3);
    EXPECT_EQ(get_iter_ctx_from_where_clause(where.get(), 0, nullptr, out_keys.get(), &out_where),
              0);
    EXPECT_EQ(keys_found(), Texts{});
    oru_do_vlist_add_int(out_keys.get(), 3);
    EXPECT_EQ(get_iter_ctx_from_where_clause(where.get(), -1, nullptr, out_keys.get(), &out_where),
              0);
    EXPECT_EQ(keys_found(), Texts{});
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, AnEmptyKeyFitsEveryName) {
    EXPECT_EQ(from_where(where_of({{"x", 1}, {"a >", 2}}), {"", "a >"}), 1);
    EXPECT_EQ(from_where(where_of({{"x", 1}}), {""}), 2);
}

// ---- What is left of where clauses ----

TEST_F(PrWalk, WhatTheHandlerCannotReadIsLeftOut) {
    get_next();
    const Nvlist where =
        where_of({{"mtu >", 1}, {"foo =", 2}, {" AND ", 3}, {" OR ", 4}, {"speed", 5}, {"", 6}});
    EXPECT_EQ(modified(where), ORU_OK);
    EXPECT_EQ(left(), (Texts{"mtu >", " AND ", " OR ", "speed"}));
    EXPECT_EQ(oru_do_nvlist_get_value(out_where, "speed"),
              oru_do_nvlist_get_value(where.get(), "speed"));
    EXPECT_EQ(oru_do_nvlist_get_len(where.get()), 6);
}

TEST_F(PrWalk, UsedItemsAreLeftOut) {
    get_next();
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 2);
    const Nvlist where = where_of({{"mtu >", 1}, {"foo", 2}, {"speed", 3}});
    EXPECT_EQ(modified(where), ORU_OK);
    EXPECT_EQ(left(), Texts{"speed"});
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 0);
    EXPECT_EQ(modified(where), ORU_OK);
    EXPECT_EQ(left(), (Texts{"mtu >", "speed"}));
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 5);
    EXPECT_EQ(modified(where), ORU_OK);
    EXPECT_EQ(left(), Texts{});
}

TEST_F(PrWalk, ANegativeNumberEndsWithoutAStatus) {
    get_next();
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, -1);
    EXPECT_EQ(modified(where_of({{"mtu", 1}})), ORU_OK);
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, ANumberOfAnotherTypeIsTheStatus) {
    get_next();
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 0);
    oru_do_vlist_set_value(walk.get(), 2, oru::test::Value(oru_do_value_new_string("1")).get());
    EXPECT_EQ(modified(where_of({{"mtu", 1}})), ORU_RC_VALUE_TYPE);
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, OtherOperationsHaveUsedNothing) {
    make(1);
    EXPECT_EQ(modified(where_of({{"mtu", 1}, {"foo", 2}})), ORU_OK);
    EXPECT_EQ(left(), Texts{"mtu"});
    reset();
    EXPECT_EQ(modified(where_of({{"mtu", 1}, {" OR ", 2}})), ORU_OK);
    EXPECT_EQ(left(), Texts{" OR "});
}

// ---- Where a batch starts ----

TEST_F(PrWalk, TheFirstBatchTakesThePositionOfTheWhereClause) {
    const Nvlist where = where_of({{"mtu >", 1}, {"speed <", 2}});
    get_next(where.get());
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 1);
    EXPECT_EQ(keys_found(), Texts{"1"});
    EXPECT_EQ(left(), Texts{"speed <"});
    EXPECT_EQ(values_in(walk.get()), (Texts{"null", "null", "1"}));
}

TEST_F(PrWalk, APositionOfTypeTwoIsRememberedToo) {
    const Nvlist where = where_of({{"mtu >", 1}, {"speed <", 2}});
    get_next(where.get());
    EXPECT_EQ(types({"mtu >", "speed >"}), ORU_OK);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(keys_found(), (Texts{"1", "2"}));
    EXPECT_EQ(left(), Texts{});
    EXPECT_EQ(values_in(walk.get()), (Texts{"null", "null", "2"}));
}

TEST_F(PrWalk, AWhereClauseWithoutAPositionIsLeftToTheCondition) {
    const Nvlist where = where_of({{"speed <", 2}});
    get_next(where.get());
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 4);
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(keys_found(), Texts{});
    EXPECT_EQ(left(), kNone);
    EXPECT_EQ(values_in(walk.get()), (Texts{"null", "null", "null"}));
}

TEST_F(PrWalk, AnEmptyWhereClauseIsOne) {
    const Nvlist where = where_of({});
    get_next(where.get());
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(keys_found(), Texts{"null"});
    EXPECT_EQ(values_in(walk.get()), (Texts{"null", "null", "null"}));
}

TEST_F(PrWalk, WithNothingTheWalkStartsWithTheFirstRow) {
    get_next();
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(keys_found(), Texts{});
    EXPECT_EQ(left(), kNone);
    EXPECT_EQ(values_in(walk.get()), Texts{});
}

TEST_F(PrWalk, LaterBatchesGoByTheKeysOfTheLastRow) {
    const Nvlist where = where_of({{"mtu >", 1}, {"speed <", 2}});
    get_next(where.get());
    types({"mtu >"});
    set_previous_keys();
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(keys_found(), (Texts{"8", "9"}));
    EXPECT_EQ(left(), Texts{"speed <"});
    EXPECT_EQ(values_in(walk.get()).back(), "1");
}

TEST_F(PrWalk, KeysWithoutAWhereClauseLeaveNothingToTest) {
    get_next();
    set_previous_keys();
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(keys_found(), (Texts{"8", "9"}));
    EXPECT_EQ(left(), kNone);
    const Nvlist where = where_of({});
    get_next(where.get());
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, TheProvidersStateComesBeforeItsKeys) {
    const Nvlist where = where_of({{"mtu >", 1}, {"speed <", 2}});
    get_next(where.get());
    oru_pr_orucore_ctx_set_iter_context(ctx, "xy", 2);
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 3);
    EXPECT_EQ(keys_found(), Texts{});
    EXPECT_EQ(left(), (Texts{"mtu >", "speed <"}));
    set_previous_keys();
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 1);
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 3);
    EXPECT_EQ(keys_found(), (Texts{"8", "9"}));
    EXPECT_EQ(left(), Texts{"speed <"});
}

TEST_F(PrWalk, AStateWithoutAWhereClauseIsAll) {
    get_next();
    oru_pr_orucore_ctx_set_num_iter_context(ctx, 4);
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 3);
    EXPECT_EQ(keys_found(), Texts{});
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, KeysThatAreNoArrayAreNone) {
    const Nvlist where = where_of({{"mtu >", 1}});
    get_next(where.get());
    oru_do_vlist_add_null(walk.get());
    oru_do_vlist_add_int(walk.get(), 8);
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 1);
    EXPECT_EQ(keys_found(), Texts{"1"});
}

TEST_F(PrWalk, AListThatIsThereIsNotReplaced) {
    const Nvlist where = where_of({{"mtu >", 1}});
    get_next(where.get());
    set_previous_keys();
    ORUDoNvlist *const given = where.get();
    ORUDoNvlist *place = given;
    EXPECT_EQ(oru_pr_get_iter_ctx_types(ctx, walk.get(), 0, nullptr, &type, out_keys.get(), &place),
              ORU_OK);
    EXPECT_EQ(place, given);
}

TEST_F(PrWalk, TheStatusOfTheNumberIsTheResult) {
    const Nvlist where = where_of({{"mtu >", 1}});
    get_next(where.get());
    set_previous_keys();
    oru_do_vlist_add_string(walk.get(), "1");
    EXPECT_EQ(types({"mtu >"}), ORU_RC_VALUE_TYPE);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, WithoutAContextTheListOfTheWalkCounts) {
    get_next();
    set_previous_keys();
    reset();
    EXPECT_EQ(types({"mtu >"}), ORU_OK);
    EXPECT_EQ(type, 2);
    EXPECT_EQ(left(), kNone);
}

TEST_F(PrWalk, NullIsRefused) {
    get_next();
    const Nvlist given = where_of({{"mtu >", 1}});
    ORUDoNvlist *w = given.get();
    ORUDoVlist *k = out_keys.get();
    const char *const keys[] = {"mtu >"};
    EXPECT_ASSERTION(get_iter_ctx_from_where_clause(nullptr, 1, keys, k, &out_where), "where");
    EXPECT_ASSERTION(get_iter_ctx_from_where_clause(w, 1, nullptr, k, &out_where), "keys");
    EXPECT_ASSERTION(get_iter_ctx_from_where_clause(w, 1, keys, nullptr, &out_where), "out_keys");
    EXPECT_ASSERTION(get_iter_ctx_from_where_clause(w, 1, keys, k, nullptr), "out_where");
    EXPECT_ASSERTION(get_modified_where_from_where_clause(ctx, nullptr, &out_where), "where");
    EXPECT_ASSERTION(get_modified_where_from_where_clause(ctx, w, nullptr), "out_where");
    ORUDoVlist *i = walk.get();
    const auto ask = [this, &keys](ORUDoVlist *list, int32_t *type_out, ORUDoVlist *found,
                                   ORUDoNvlist **place) {
        oru_pr_get_iter_ctx_types(ctx, list, 1, keys, type_out, found, place);
    };
    EXPECT_ASSERTION(ask(nullptr, &type, k, &out_where), "iter_context");
    EXPECT_ASSERTION(ask(i, nullptr, k, &out_where), "type_out");
    EXPECT_ASSERTION(ask(i, &type, nullptr, &out_where), "out_keys");
    EXPECT_ASSERTION(ask(i, &type, k, nullptr), "out_where");
}

// ---- Memory ----

TEST_F(PrWalk, APositionIsWholeOrNone) {
    const Nvlist where = where_of({{"a >", 1}, {"b >=", 2}, {"mtu", 3}, {"speed", 4}});
    oru::test::sweep_oom(
        [this, &where] {
            const int32_t found = from_where(where, {"a >", "b >"});
            if (found == 2) {
                EXPECT_EQ(oru_do_vlist_get_len(out_keys.get()), 2);
                if (out_where == nullptr) {
                    EXPECT_TRUE(oom_hit());
                } else {
                    EXPECT_EQ(left(), (Texts{"mtu", "speed"}));
                }
            } else {
                EXPECT_EQ(found, 0);
                EXPECT_TRUE(oom_hit());
                EXPECT_EQ(out_where, nullptr);
            }
            forget();
        },
        {.promised_deaths = {}, .at_least = 5});
}

TEST_F(PrWalk, WhatIsLeftIsWholeOrNone) {
    const Nvlist where = where_of({{"mtu", 3}, {"speed", 4}});
    get_next();
    oru::test::sweep_oom(
        [this, &where] {
            EXPECT_EQ(modified(where), ORU_OK);
            if (out_where == nullptr) {
                EXPECT_TRUE(oom_hit());
            } else {
                EXPECT_EQ(left(), (Texts{"mtu", "speed"}));
            }
            forget();
        },
        {.promised_deaths = {}, .at_least = 3});
}

TEST_F(PrWalk, KeysThatFindNoMemoryAreReported) {
    const Nvlist where = where_of({{"mtu", 3}});
    get_next(where.get());
    set_previous_keys();
    oru::test::sweep_oom(
        [this] {
            const int32_t code = types({"mtu >"});
            EXPECT_EQ(type, 2);
            if (code == ORU_OK) {
                EXPECT_EQ(oru_do_vlist_get_len(out_keys.get()), 2);
            } else {
                EXPECT_EQ(code, ORU_RC_MALLOC);
                EXPECT_TRUE(oom_hit());
                EXPECT_EQ(out_where, nullptr);
            }
            forget();
        },
        {.promised_deaths = {}, .at_least = 4});
}

}  // namespace
