#include <oruplatform/poolheap.h>

#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/unit/pr/pr_support.h"

namespace {

using oru::test::oom_hit;
using oru::test::values_in;
using oru::test::Vlist;

using Texts = std::vector<std::string>;

class PrWalkState : public oru::test::Request {
  public:
    PrWalkState() { get_next(); }

    Vlist keys() const {
        Vlist list(oru_do_vlist_new());
        oru_do_vlist_add_int(list.get(), 4);
        return list;
    }
    ORUDoValue *at(int32_t position) { return oru_do_vlist_get_value(walk.get(), position); }
    std::vector<int32_t> types() {
        std::vector<int32_t> types;
        for (int32_t i = 0; i < oru_do_vlist_get_len(walk.get()); ++i)
            types.push_back(oru_do_value_get_type(at(i)));
        return types;
    }

    const uint8_t *bytes = nullptr;
    int32_t length = -7;
    int32_t n = -7;
};

using Types = std::vector<int32_t>;
constexpr int32_t kNull = ORU_DO_TYPE_NULL;
constexpr int32_t kInt = ORU_DO_TYPE_INT;
constexpr int32_t kHex = ORU_DO_TYPE_HEX_BINARY;
constexpr int32_t kArray = ORU_DO_TYPE_ARRAY;

TEST_F(PrWalkState, BytesAreCopiedAndReadBack) {
    char given[] = {1, 2, 3};
    EXPECT_EQ(oru_pr_orucore_ctx_set_iter_context(ctx, given, 3), ORU_OK);
    given[0] = 9;
    EXPECT_EQ(types(), Types{kHex});
    EXPECT_EQ(oru_pr_orucore_ctx_get_iter_context(ctx, &bytes, &length), ORU_OK);
    ASSERT_EQ(length, 3);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[2], 3);
    EXPECT_EQ(oru_pr_orucore_ctx_get_iter_context(ctx, &bytes, nullptr), ORU_OK);
    EXPECT_EQ(oru_pr_orucore_ctx_set_iter_context(ctx, "xy", 2), ORU_OK);
    EXPECT_EQ(types(), Types{kHex});
    EXPECT_EQ(oru_pr_orucore_ctx_get_iter_context(ctx, &bytes, &length), ORU_OK);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(bytes[0], 'x');
}

TEST_F(PrWalkState, ANumberStandsInTheSamePlace) {
    EXPECT_EQ(oru_pr_orucore_ctx_set_iter_context(ctx, "xy", 2), ORU_OK);
    EXPECT_EQ(oru_pr_orucore_ctx_set_num_iter_context(ctx, -5), ORU_OK);
    EXPECT_EQ(types(), Types{kInt});
    EXPECT_EQ(oru_pr_orucore_ctx_get_num_iter_context(ctx, &n), ORU_OK);
    EXPECT_EQ(n, -5);
}

TEST_F(PrWalkState, AnotherTypeIsTheStatusOfTheRead) {
    oru_pr_orucore_ctx_set_num_iter_context(ctx, 5);
    bytes = reinterpret_cast<const uint8_t *>("");
    EXPECT_EQ(oru_pr_orucore_ctx_get_iter_context(ctx, &bytes, &length), ORU_RC_VALUE_TYPE);
    EXPECT_EQ(bytes, nullptr);
    oru_pr_orucore_ctx_set_iter_context(ctx, "xy", 2);
    EXPECT_EQ(oru_pr_orucore_ctx_get_num_iter_context(ctx, &n), ORU_RC_VALUE_TYPE);
    EXPECT_EQ(n, 0);
    // Null values are no exception here.
    oru_pr_orucore_ctx_set_iter_context(ctx, nullptr, 2);
    EXPECT_EQ(types(), Types{kNull});
    EXPECT_EQ(oru_pr_orucore_ctx_get_iter_context(ctx, &bytes, &length), ORU_RC_VALUE_TYPE);
    EXPECT_EQ(oru_pr_orucore_ctx_get_num_iter_context(ctx, &n), ORU_RC_VALUE_TYPE);
}

TEST_F(PrWalkState, KeysAreSharedBehindANullState) {
    const Vlist list = keys();
    EXPECT_EQ(oru_pr_orucore_ctx_set_prev_keys(ctx, list.get()), ORU_OK);
    EXPECT_EQ(types(), (Types{kNull, kArray}));
    EXPECT_EQ(oru_pr_orucore_ctx_get_prev_keys(ctx), list.get());
}

TEST_F(PrWalkState, TheStateReplacesTheNullInFrontOfTheKeys) {
    oru_pr_orucore_ctx_set_prev_keys(ctx, keys().get());
    EXPECT_EQ(oru_pr_orucore_ctx_set_iter_context(ctx, "xy", 2), ORU_OK);
    EXPECT_EQ(types(), (Types{kHex, kArray}));
}

TEST_F(PrWalkState, KeysBehindAStateLeaveIt) {
    oru_pr_orucore_ctx_set_num_iter_context(ctx, 8);
    oru_pr_orucore_ctx_set_prev_keys(ctx, keys().get());
    EXPECT_EQ(types(), (Types{kInt, kArray}));
    EXPECT_EQ(oru_pr_orucore_ctx_set_prev_keys(ctx, nullptr), ORU_OK);
    EXPECT_EQ(types(), (Types{kInt, kNull}));
    EXPECT_EQ(oru_pr_orucore_ctx_get_prev_keys(ctx), nullptr);
}

TEST_F(PrWalkState, NoWhereItemsOnAnEmptyListAreThreeNulls) {
    EXPECT_EQ(oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 0), ORU_OK);
    EXPECT_EQ(values_in(walk.get()), (Texts{"null", "null", "null"}));
    EXPECT_EQ(oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, &n), ORU_OK);
    EXPECT_EQ(n, 0);
}

TEST_F(PrWalkState, WhereItemsAreCounted) {
    EXPECT_EQ(oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 3), ORU_OK);
    EXPECT_EQ(values_in(walk.get()), (Texts{"null", "null", "3"}));
    EXPECT_EQ(types(), (Types{kNull, kNull, kInt}));
    EXPECT_EQ(oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, &n), ORU_OK);
    EXPECT_EQ(n, 3);
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 0);
    EXPECT_EQ(types(), (Types{kNull, kNull, kNull}));
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, -1);
    EXPECT_EQ(oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, &n), ORU_OK);
    EXPECT_EQ(n, -1);
}

TEST_F(PrWalkState, AShortListIsFilledUp) {
    oru_pr_orucore_ctx_set_num_iter_context(ctx, 8);
    oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 3);
    EXPECT_EQ(values_in(walk.get()), (Texts{"8", "null", "3"}));
}

TEST_F(PrWalkState, ACountOfAnotherTypeIsTheStatusOfTheRead) {
    oru_do_vlist_add_null(walk.get());
    oru_do_vlist_add_null(walk.get());
    oru_do_vlist_add_string(walk.get(), "3");
    EXPECT_EQ(oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, &n), ORU_RC_VALUE_TYPE);
    EXPECT_EQ(n, 0);
}

TEST_F(PrWalkState, WhatIsAbsentLeavesTheOutputsButTheCount) {
    const auto *const before = reinterpret_cast<const uint8_t *>("");
    bytes = before;
    EXPECT_EQ(oru_pr_orucore_ctx_get_iter_context(ctx, &bytes, &length), ORU_OK);
    EXPECT_EQ(bytes, before);
    EXPECT_EQ(length, -7);
    EXPECT_EQ(oru_pr_orucore_ctx_get_num_iter_context(ctx, &n), ORU_OK);
    EXPECT_EQ(n, -7);
    EXPECT_EQ(oru_pr_orucore_ctx_get_prev_keys(ctx), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, &n), ORU_OK);
    EXPECT_EQ(n, 0);
}

TEST_F(PrWalkState, OtherOperationsHaveNone) {
    for (const int32_t code : {0, 1, 2, 4, 5, 6, 7, 8, 9, 10, 3}) {
        SCOPED_TRACE(code);
        if (code != 0) {
            make(code);
        } else {
            reset();  // no context at all
        }
        if (code == 3)
            ctx->args.get_next.iter_context = nullptr;
        EXPECT_EQ(oru_pr_orucore_ctx_set_iter_context(ctx, "xy", 2), 0);
        EXPECT_EQ(oru_pr_orucore_ctx_set_num_iter_context(ctx, 1), 0);
        EXPECT_EQ(oru_pr_orucore_ctx_set_prev_keys(ctx, keys().get()), 0);
        EXPECT_EQ(oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 1), 0);
        EXPECT_EQ(oru_pr_orucore_ctx_get_iter_context(ctx, &bytes, &length), 0);
        EXPECT_EQ(bytes, nullptr);
        EXPECT_EQ(length, -7);
        EXPECT_EQ(oru_pr_orucore_ctx_get_num_iter_context(ctx, &n), 0);
        EXPECT_EQ(oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, &n), 0);
        EXPECT_EQ(n, -7);
        EXPECT_EQ(oru_pr_orucore_ctx_get_prev_keys(ctx), nullptr);
        EXPECT_EQ(oru_do_vlist_get_len(walk.get()), 0);
        EXPECT_EQ(oru_do_vlist_get_len(vlist.get()), 0);
    }
}

TEST_F(PrWalkState, OutputsAreRequired) {
    oru_pr_orucore_ctx_set_num_iter_context(ctx, 1);
    EXPECT_ASSERTION(oru_pr_orucore_ctx_get_iter_context(ctx, nullptr, &length), "bytes_out");
    EXPECT_ASSERTION(oru_pr_orucore_ctx_get_num_iter_context(ctx, nullptr), "n_out");
    EXPECT_ASSERTION(oru_pr_orucore_ctx_get_mod_where_clause_index(ctx, nullptr), "n_out");
}

TEST_F(PrWalkState, RunningOutOfMemoryLeavesAtMostFillings) {
    oru::test::sweep_oom(
        [this] {
            if (oru_pr_orucore_ctx_set_mod_where_clause_index(ctx, 3) != ORU_OK) {
                EXPECT_TRUE(oom_hit());
                EXPECT_LT(oru_do_vlist_get_len(walk.get()), 3);
            }
            if (oru_pr_orucore_ctx_set_iter_context(ctx, "xy", 2) != ORU_OK) {
                EXPECT_TRUE(oom_hit());
                EXPECT_TRUE(at(0) == nullptr || oru_do_value_is_null(at(0)) != 0);
            }
            const Vlist list(oru_do_vlist_new());
            if (list && oru_pr_orucore_ctx_set_prev_keys(ctx, list.get()) == ORU_OK) {
                EXPECT_EQ(oru_pr_orucore_ctx_get_prev_keys(ctx), list.get());
            } else {
                EXPECT_TRUE(oom_hit());
            }
            if (oru_pr_orucore_ctx_set_num_iter_context(ctx, 6) == ORU_OK) {
                EXPECT_EQ(oru_pr_orucore_ctx_get_num_iter_context(ctx, &n), ORU_OK);
                EXPECT_EQ(n, 6);
            } else {
                EXPECT_TRUE(oom_hit());
            }
            oru_do_vlist_clear(walk.get());
        },
        {.promised_deaths = {}, .at_least = 8});
}

}  // namespace
