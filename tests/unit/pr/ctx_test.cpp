#include <oruplatform/poolheap.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "oru/condition.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"
#include "tests/unit/pr/pr_support.h"

namespace {

using oru::test::names_in;
using oru::test::Nvlist;
using oru::test::oom_hit;
using oru::test::Request;
using oru::test::Trace;
using oru::test::TraceCapture;
using oru::test::where_of;

using Names = std::vector<std::string>;
class PrCtx : public Request {};

const std::vector<int32_t> kAllCodes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};

TEST(PrCtxRecords, FieldsStandInTheirOrder) {
    EXPECT_EQ(offsetof(ORUPrCtx, op_code), 0u);
    EXPECT_EQ(offsetof(ORUPrCtx, crudx), 8u);
    EXPECT_EQ(offsetof(ORUPrCtx, edit_handler), 16u);
    EXPECT_EQ(offsetof(ORUPrCtx, args), 24u);
    EXPECT_EQ(offsetof(ORUPrReadArgs, nlist), 8u);
    EXPECT_EQ(offsetof(ORUPrReadArgs, vlist), 16u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, nlist), 8u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, where), 16u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, order), 24u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, count), 32u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, value_table), 40u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, iter_context), 48u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, where_enabled), 56u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, condition), 64u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, nlist_where), 72u);
    EXPECT_EQ(offsetof(ORUPrGetNextArgs, vlist_where), 80u);
    EXPECT_EQ(offsetof(ORUPrCreateArgs, parent_uri), 8u);
    EXPECT_EQ(offsetof(ORUPrCreateArgs, child_ref_name), 16u);
    EXPECT_EQ(offsetof(ORUPrCreateArgs, child_mr_typename), 24u);
    EXPECT_EQ(offsetof(ORUPrCreateArgs, props), 32u);
    EXPECT_EQ(offsetof(ORUPrSetArgs, uri), 8u);
    EXPECT_EQ(offsetof(ORUPrSetArgs, props), 16u);
    EXPECT_EQ(offsetof(ORUPrDeleteArgs, uri), 8u);
    EXPECT_EQ(offsetof(ORUPrActionArgs, action), 8u);
    EXPECT_EQ(offsetof(ORUPrActionArgs, in_props), 16u);
    EXPECT_EQ(offsetof(ORUPrActionArgs, out_props), 24u);
    EXPECT_EQ(sizeof(ORUPrInstanceCtx), 24u);
    EXPECT_EQ(sizeof(ORUPrHexData), 16u);
}

// ---- What constructors store ----

TEST_F(PrCtx, EveryOperationHasItsCodeAndHandler) {
    for (const int32_t code : kAllCodes) {
        make(code);
        EXPECT_EQ(ctx->op_code, code);
        EXPECT_EQ(ctx->crudx, crudx);
        EXPECT_EQ(ctx->edit_handler, 0);
        EXPECT_EQ(inst->data[0], 0);
        EXPECT_EQ(inst->data[1], 0);
        EXPECT_EQ(inst->entries, nullptr);
    }
}

TEST_F(PrCtx, ReadsKeepTheirArguments) {
    for (const int32_t code : {1, 2}) {
        make(code);
        EXPECT_EQ(ctx->args.read.uri, uri.get());
        EXPECT_EQ(ctx->args.read.nlist, nlist.get());
        EXPECT_EQ(ctx->args.read.vlist, vlist.get());
    }
}

TEST_F(PrCtx, AWalkKeepsItsArgumentsAndMakesItsLists) {
    const Nvlist where = where_of({{"mtu >", 5}});
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    const ORUPrGetNextArgs &args = ctx->args.get_next;
    EXPECT_EQ(args.coll_uri, uri.get());
    EXPECT_EQ(args.nlist, nlist.get());
    EXPECT_EQ(args.where, where.get());
    EXPECT_EQ(args.order, order.get());
    EXPECT_EQ(args.count, 7);
    EXPECT_EQ(args.value_table, table.get());
    EXPECT_EQ(args.iter_context, walk.get());
    EXPECT_EQ(args.where_enabled, 1);
    EXPECT_NE(args.condition, nullptr);
    ASSERT_NE(args.nlist_where, nullptr);
    EXPECT_EQ(oru_do_nlist_get_len(args.nlist_where), 0);
    ASSERT_NE(args.vlist_where, nullptr);
    EXPECT_EQ(oru_do_vlist_get_len(args.vlist_where), 0);
}

TEST_F(PrCtx, AWalkWithoutWhereHasNoConditionButItsLists) {
    ASSERT_EQ(oru_pr_ctx_new_get_next(crudx, uri.get(), nlist.get(), nullptr, nullptr, 0,
                                      table.get(), walk.get(), &ctx, &inst),
              ORU_OK);
    EXPECT_EQ(ctx->args.get_next.where, nullptr);
    EXPECT_EQ(ctx->args.get_next.order, nullptr);
    EXPECT_EQ(ctx->args.get_next.condition, nullptr);
    EXPECT_NE(ctx->args.get_next.nlist_where, nullptr);
    EXPECT_NE(ctx->args.get_next.vlist_where, nullptr);
}

TEST_F(PrCtx, CreateKeepsItsArguments) {
    for (const int32_t code : {4, 7}) {
        make(code);
        EXPECT_EQ(ctx->args.create.data_ifc, &data);
        EXPECT_EQ(ctx->args.create.parent_uri, uri.get());
        EXPECT_EQ(ctx->args.create.child_ref_name, ref_name.get());
        EXPECT_EQ(ctx->args.create.child_mr_typename, type_name.get());
        EXPECT_EQ(ctx->args.create.props, props.get());
    }
}

TEST_F(PrCtx, SetAndDeleteKeepTheirArguments) {
    for (const int32_t code : {5, 8}) {
        make(code);
        EXPECT_EQ(ctx->args.set.data_ifc, &data);
        EXPECT_EQ(ctx->args.set.uri, uri.get());
        EXPECT_EQ(ctx->args.set.props, props.get());
    }
    for (const int32_t code : {6, 9}) {
        make(code);
        EXPECT_EQ(ctx->args.remove.data_ifc, &data);
        EXPECT_EQ(ctx->args.remove.uri, uri.get());
    }
}

TEST_F(PrCtx, AnActionKeepsItsArgumentsAndMayHaveNoUri) {
    make(10);
    EXPECT_EQ(ctx->args.action.uri, uri.get());
    EXPECT_EQ(ctx->args.action.action, type_name.get());
    EXPECT_EQ(ctx->args.action.in_props, props.get());
    EXPECT_EQ(ctx->args.action.out_props, out_props.get());
    reset();
    ASSERT_EQ(oru_pr_ctx_new_invoke_action(crudx, nullptr, type_name.get(), props.get(),
                                           out_props.get(), &ctx, &inst),
              ORU_OK);
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_uri(ctx), nullptr);
}

TEST_F(PrCtx, OnlyModeOneChoosesTheSecondCode) {
    for (const int32_t mode : {-1, 0, 2}) {
        ASSERT_EQ(oru_pr_ctx_new_delete_resource(crudx, &data, uri.get(), mode, &ctx, &inst),
                  ORU_OK);
        EXPECT_EQ(ctx->op_code, 6);
        reset();
    }
}

TEST_F(PrCtx, HoldsNoReferenceOnItsArguments) {
    for (const int32_t code : kAllCodes) {
        reset();
        TraceCapture traces(8);
        make(code);
        for (const std::string &line : traces.at(8)) {
            // The two lists of a walk are made, and nothing that was given is counted.
            EXPECT_EQ(code, 3) << line;
            EXPECT_NE(line.find(" 1"), std::string::npos) << line;
        }
    }
}

// ---- Where clauses ----

// The attributes of the messages among those at the level of counts.
Names ignored(const TraceCapture &traces) {
    const std::string head = "Ignoring unknown attribute ";
    const std::string tail = " found in where clause";
    Names names;
    for (const std::string &line : traces.at(8)) {
        if (line.compare(0, head.size(), head) != 0)
            continue;
        const size_t length = line.size() - head.size() - tail.size();
        EXPECT_EQ(line.substr(head.size() + length), tail);
        names.push_back(line.substr(head.size(), length));
    }
    return names;
}

TEST_F(PrCtx, AnUnknownAttributeIsTakenOutOfTheCallersList) {
    const Nvlist where = where_of({{"foo = 1", 1}, {"mtu >", 5}, {"bar", 2}, {"speed<=", 3}});
    TraceCapture traces(8);
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    EXPECT_EQ(names_in(where.get()), (Names{"mtu >", "speed<="}));
    EXPECT_EQ(ignored(traces), (Names{"foo", "bar"}));
    EXPECT_EQ(traces.at(7), Names{});
    EXPECT_EQ(oru_pr_orucore_ctx_get_where_clause(ctx), where.get());
}

TEST_F(PrCtx, AndAndOrStay) {
    const Nvlist where = where_of({{" AND ", 1}, {" OR ", 2}, {"AND", 3}, {"OR", 4}, {"and", 5}});
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    EXPECT_EQ(names_in(where.get()), (Names{" AND ", " OR ", "AND", "OR"}));
}

TEST_F(PrCtx, AnUnknownItemGoesWhateverItsValue) {
    // Values that cannot be compared, not even with themselves, and the second of two equal names.
    const Nvlist where(oru_do_nvlist_new());
    oru_do_nvlist_add_null(where.get(), "foo");
    oru_do_nvlist_add_sequence(where.get(), "foo", where_of({{"x", 1}}).get());
    oru_do_nvlist_add_double(where.get(), "foo", 1.5);
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    EXPECT_EQ(oru_do_nvlist_get_len(where.get()), 0);
    // An empty clause is a clause: its condition is true of everything.
    EXPECT_NE(oru_pr_orucore_ctx_get_condition(ctx), nullptr);
}

TEST_F(PrCtx, AnItemWithoutAnAttributeIsUnknown) {
    const Nvlist where = where_of({{"", 1}, {" <=>", 2}});
    TraceCapture traces(8);
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    EXPECT_EQ(oru_do_nvlist_get_len(where.get()), 0);
    EXPECT_EQ(ignored(traces), (Names{"", ""}));
}

TEST_F(PrCtx, TheConditionIsThatOfWhatIsLeft) {
    const Nvlist where = where_of({{"foo =", 1}, {"mtu >", 5}});
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    const auto holds = [this](int32_t mtu) {
        const auto names = oru::test::names_of({"mtu"});
        const oru::test::Vlist values(oru_do_vlist_new());
        oru_do_vlist_add_int(values.get(), mtu);
        return oru_do_condition_eval_nlist_vlist(oru_pr_orucore_ctx_get_condition(ctx), names.get(),
                                                 values.get());
    };
    EXPECT_EQ(holds(6), 1);
    EXPECT_EQ(holds(5), 0);
}

// ---- Reading ----

TEST_F(PrCtx, EachOperationHasItsArgumentsAndNoOthers) {
    oru_do_properties_set_int(props.get(), "mtu", 5);
    for (const int32_t code : kAllCodes) {
        SCOPED_TRACE(code);
        make(code);
        const auto among = [code](std::initializer_list<int32_t> codes) {
            return std::find(codes.begin(), codes.end(), code) != codes.end();
        };
        const bool creates = among({4, 7});
        const bool sets = among({5, 8});
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_op_code(ctx), code);
        EXPECT_EQ(oru_pr_orucore_ctx_get_crudx_handler(ctx), crudx);
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_uri(ctx), uri.get());
        EXPECT_EQ(oru_pr_orucore_ctx_get_data_ifc(ctx), code >= 4 && code <= 9 ? &data : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_get_nlist(ctx), code <= 3 ? nlist.get() : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_create_props(ctx), creates ? props.get() : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_set_props(ctx), sets ? props.get() : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_do_value_create_set_prop(ctx, "mtu"),
                  creates || sets ? oru_do_properties_get_value(props.get(), "mtu") : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_do_value_create_set_prop(ctx, "speed"), nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_where_clause(ctx), nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_orderby(ctx), code == 3 ? order.get() : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_condition(ctx), nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_nlist_where(ctx),
                  code == 3 ? ctx->args.get_next.nlist_where : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_vlist_where(ctx),
                  code == 3 ? ctx->args.get_next.vlist_where : nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_action_in_props(ctx), code == 10 ? props.get() : nullptr);
    }
}

TEST_F(PrCtx, TheListsOfAWalkAreThereToRead) {
    const Nvlist where = where_of({{"mtu", 1}});
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    EXPECT_NE(oru_pr_orucore_ctx_get_nlist_where(ctx), nullptr);
    EXPECT_NE(oru_pr_orucore_ctx_get_vlist_where(ctx), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_where_clause(ctx), where.get());
    EXPECT_NE(oru_pr_orucore_ctx_get_condition(ctx), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_condition(ctx), ctx->args.get_next.condition);
}

TEST_F(PrCtx, WithoutPropertiesThereIsNoValue) {
    make(4);
    ctx->args.create.props = nullptr;
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_do_value_create_set_prop(ctx, "mtu"), nullptr);
    make(5);
    ctx->args.set.props = nullptr;
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_do_value_create_set_prop(ctx, "mtu"), nullptr);
}

TEST_F(PrCtx, TheEditHandlerIsTheProviders) {
    for (const int32_t code : kAllCodes) {
        make(code);
        EXPECT_EQ(oru_pr_orucore_ctx_get_edit_handler(ctx), 0);
        oru_pr_orucore_ctx_set_edit_handler(ctx, 4711);
        EXPECT_EQ(oru_pr_orucore_ctx_get_edit_handler(ctx), 4711);
        EXPECT_EQ(ctx->edit_handler, 4711);
    }
}

TEST_F(PrCtx, AWhereClauseIsEnabledUntilItIsDisabled) {
    for (const int32_t code : kAllCodes) {
        make(code);
        EXPECT_EQ(oru_pr_orucore_ctx_is_where_clause_enabled(ctx), 1);
        const ORUPrCtx before = *ctx;
        oru_pr_orucore_ctx_disable_where_clause(ctx);
        EXPECT_EQ(oru_pr_orucore_ctx_is_where_clause_enabled(ctx), code == 3 ? 0 : 1);
        EXPECT_EQ(std::memcmp(&before, ctx, sizeof before) == 0, code != 3);
    }
}

TEST(PrCtxNull, HasNothing) {
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_op_code(nullptr), 0);
    EXPECT_EQ(oru_pr_orucore_ctx_get_crudx_handler(nullptr), nullptr);
    oru_pr_orucore_ctx_set_edit_handler(nullptr, 1);
    EXPECT_EQ(oru_pr_orucore_ctx_get_edit_handler(nullptr), 0);
    EXPECT_EQ(oru_pr_orucore_ctx_get_data_ifc(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_uri(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_get_nlist(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_create_props(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_set_props(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_cur_do_value_create_set_prop(nullptr, "a"), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_where_clause(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_orderby(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_condition(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_nlist_where(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_vlist_where(nullptr), nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_get_action_in_props(nullptr), nullptr);
    oru_pr_orucore_ctx_disable_where_clause(nullptr);
    EXPECT_EQ(oru_pr_orucore_ctx_is_where_clause_enabled(nullptr), 1);
    oru_pr_ctx_delete(nullptr, nullptr);
}

TEST_F(PrCtx, AnUnknownCodeHasNothing) {
    ORUPrCtx odd{};
    std::memset(&odd.args, 0xff, sizeof odd.args);
    for (const int32_t code : {0, 11, -1}) {
        odd.op_code = code;
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_uri(&odd), nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_data_ifc(&odd), nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_cur_get_nlist(&odd), nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_get_condition(&odd), nullptr);
        EXPECT_EQ(oru_pr_orucore_ctx_is_where_clause_enabled(&odd), 1);
    }
}

// ---- Records and deleting ----

TEST(PrCtxRecords, InstanceAndHexDataComeZeroed) {
    ORUPrInstanceCtx *inst = oru_pr_instance_ctx_new();
    ORUPrHexData *hex = oru_pr_hex_data_new();
    const ORUPrInstanceCtx no_instance{};
    const ORUPrHexData no_hex{};
    ASSERT_NE(inst, nullptr);
    ASSERT_NE(hex, nullptr);
    EXPECT_EQ(std::memcmp(inst, &no_instance, sizeof no_instance), 0);
    EXPECT_EQ(std::memcmp(hex, &no_hex, sizeof no_hex), 0);
    poolheap_stats_t stats{};
    poolheap_tag_stats(0x2900000, &stats);
    EXPECT_EQ(stats.live_blocks, 2u);
    oru_pr_ctx_delete(nullptr, inst);
    ph_free_named(hex);
}

TEST_F(PrCtx, EitherRecordIsDeletedAlone) {
    make(3);
    oru_pr_ctx_delete(ctx, nullptr);
    oru_pr_ctx_delete(nullptr, inst);
    ctx = nullptr;
    inst = nullptr;
}

TEST_F(PrCtx, DeletingLeavesWhatTheProviderShares) {
    const Nvlist where = where_of({{"mtu", 1}});
    ASSERT_EQ(get_next(where.get()), ORU_OK);
    ORUDoCondition *condition = oru_do_condition_ref(oru_pr_orucore_ctx_get_condition(ctx));
    reset();
    EXPECT_NE(oru_do_condition_get_expr(condition), nullptr);
    oru_do_condition_deref(condition);
    EXPECT_EQ(oru_do_nvlist_get_len(where.get()), 1);
}

// ---- Null arguments ----

TEST_F(PrCtx, ReadsRefuseNull) {
    ORUDoUri *u = uri.get();
    ORUDoNlist *n = nlist.get();
    ORUDoVlist *v = vlist.get();
    for (const auto make_read :
         {oru_pr_ctx_new_get_oper_prop_values, oru_pr_ctx_new_get_cfg_prop_values}) {
        EXPECT_ASSERTION(make_read(nullptr, u, n, v, &ctx, &inst), "crudx");
        EXPECT_ASSERTION(make_read(crudx, nullptr, n, v, &ctx, &inst), "uri");
        EXPECT_ASSERTION(make_read(crudx, u, nullptr, v, &ctx, &inst), "nlist");
        EXPECT_ASSERTION(make_read(crudx, u, n, nullptr, &ctx, &inst), "vlist");
        EXPECT_ASSERTION(make_read(crudx, u, n, v, nullptr, &inst), "oru_ctxp");
        EXPECT_ASSERTION(make_read(crudx, u, n, v, &ctx, nullptr), "inst_ctxp");
    }
}

TEST_F(PrCtx, WalksRefuseNull) {
    ORUDoUri *u = uri.get();
    ORUDoNlist *n = nlist.get();
    ORUDoVtable *t = table.get();
    ORUDoVlist *w = walk.get();
    const auto make_walk = [](auto... args) { oru_pr_ctx_new_get_next(args...); };
    ORUDoNvlist *const where = nullptr;
    ORUDoNlist *const by = nullptr;
    EXPECT_ASSERTION(make_walk(nullptr, u, n, where, by, 1, t, w, &ctx, &inst), "crudx");
    EXPECT_ASSERTION(make_walk(crudx, nullptr, n, where, by, 1, t, w, &ctx, &inst), "coll_uri");
    EXPECT_ASSERTION(make_walk(crudx, u, nullptr, where, by, 1, t, w, &ctx, &inst), "nlist");
    EXPECT_ASSERTION(make_walk(crudx, u, n, where, by, 1, nullptr, w, &ctx, &inst), "value_table");
    EXPECT_ASSERTION(make_walk(crudx, u, n, where, by, 1, t, nullptr, &ctx, &inst), "iter_context");
    EXPECT_ASSERTION(make_walk(crudx, u, n, where, by, 1, t, w, nullptr, &inst), "oru_ctxp");
    EXPECT_ASSERTION(make_walk(crudx, u, n, where, by, 1, t, w, &ctx, nullptr), "inst_ctxp");
}

TEST_F(PrCtx, CreateRefusesNull) {
    ORUDoUri *u = uri.get();
    ORUDoName *r = ref_name.get();
    ORUDoName *m = type_name.get();
    ORUDoProperties *p = props.get();
    const auto create = [](auto... args) { oru_pr_ctx_new_create_resource(args...); };
    EXPECT_ASSERTION(create(nullptr, &data, u, r, m, p, 0, &ctx, &inst), "crudx");
    EXPECT_ASSERTION(create(crudx, nullptr, u, r, m, p, 0, &ctx, &inst), "data_ifc");
    EXPECT_ASSERTION(create(crudx, &data, nullptr, r, m, p, 0, &ctx, &inst), "parent_uri");
    EXPECT_ASSERTION(create(crudx, &data, u, nullptr, m, p, 0, &ctx, &inst), "child_ref_name");
    EXPECT_ASSERTION(create(crudx, &data, u, r, nullptr, p, 0, &ctx, &inst), "child_mr_typename");
    EXPECT_ASSERTION(create(crudx, &data, u, r, m, nullptr, 0, &ctx, &inst), "props");
    EXPECT_ASSERTION(create(crudx, &data, u, r, m, p, 0, nullptr, &inst), "oru_ctxp");
    EXPECT_ASSERTION(create(crudx, &data, u, r, m, p, 0, &ctx, nullptr), "inst_ctxp");
}

TEST_F(PrCtx, SetAndDeleteRefuseNull) {
    ORUDoUri *u = uri.get();
    ORUDoProperties *p = props.get();
    const auto set = [](auto... args) { oru_pr_ctx_new_set_properties(args...); };
    EXPECT_ASSERTION(set(nullptr, &data, u, p, 0, &ctx, &inst), "crudx");
    EXPECT_ASSERTION(set(crudx, nullptr, u, p, 0, &ctx, &inst), "data_ifc");
    EXPECT_ASSERTION(set(crudx, &data, nullptr, p, 0, &ctx, &inst), "uri");
    EXPECT_ASSERTION(set(crudx, &data, u, nullptr, 0, &ctx, &inst), "props");
    EXPECT_ASSERTION(set(crudx, &data, u, p, 0, nullptr, &inst), "oru_ctxp");
    EXPECT_ASSERTION(set(crudx, &data, u, p, 0, &ctx, nullptr), "inst_ctxp");
    const auto remove = [](auto... args) { oru_pr_ctx_new_delete_resource(args...); };
    EXPECT_ASSERTION(remove(nullptr, &data, u, 0, &ctx, &inst), "crudx");
    EXPECT_ASSERTION(remove(crudx, nullptr, u, 0, &ctx, &inst), "data_ifc");
    EXPECT_ASSERTION(remove(crudx, &data, nullptr, 0, &ctx, &inst), "uri");
    EXPECT_ASSERTION(remove(crudx, &data, u, 0, nullptr, &inst), "oru_ctxp");
    EXPECT_ASSERTION(remove(crudx, &data, u, 0, &ctx, nullptr), "inst_ctxp");
}

TEST_F(PrCtx, ActionsRefuseNull) {
    ORUDoUri *u = uri.get();
    ORUDoName *a = type_name.get();
    ORUDoProperties *in = props.get();
    ORUDoProperties *out = out_props.get();
    const auto invoke = [](auto... args) { oru_pr_ctx_new_invoke_action(args...); };
    EXPECT_ASSERTION(invoke(nullptr, u, a, in, out, &ctx, &inst), "crudx");
    EXPECT_ASSERTION(invoke(crudx, u, nullptr, in, out, &ctx, &inst), "action");
    EXPECT_ASSERTION(invoke(crudx, u, a, nullptr, out, &ctx, &inst), "in_props");
    EXPECT_ASSERTION(invoke(crudx, u, a, in, nullptr, &ctx, &inst), "out_props");
    EXPECT_ASSERTION(invoke(crudx, u, a, in, out, nullptr, &inst), "oru_ctxp");
    EXPECT_ASSERTION(invoke(crudx, u, a, in, out, &ctx, nullptr), "inst_ctxp");
}

// ---- Memory ----

TEST_F(PrCtx, WithoutEitherRecordNeitherIsKept) {
    for (const uint64_t nth : {1u, 2u}) {
        const Nvlist where = where_of({{"foo", 1}});
        TraceCapture traces;
        poolheap_fail_nth(nth, 0);
        const int32_t code = get_next(where.get());
        poolheap_fail_off();
        EXPECT_EQ(code, ORU_RC_MALLOC);
        EXPECT_EQ(ctx, nullptr);
        EXPECT_EQ(inst, nullptr);
        EXPECT_EQ(oru_do_nvlist_get_len(where.get()), 1);
        EXPECT_EQ(traces.lines(), std::vector<Trace>{});
    }
}

TEST_F(PrCtx, EveryConstructorReportsThatMemoryRanOut) {
    for (const int32_t code : kAllCodes) {
        for (const uint64_t nth : {1u, 2u}) {
            reset();
            poolheap_fail_nth(nth, 0);
            const int32_t result = make_code(code);
            poolheap_fail_off();
            EXPECT_EQ(result, ORU_RC_MALLOC) << code;
            EXPECT_EQ(ctx, nullptr);
            EXPECT_EQ(inst, nullptr);
        }
    }
}

TEST_F(PrCtx, AWalkIsMadeAsFarAsMemoryGoes) {
    oru::test::sweep_oom(
        [this] {
            const Nvlist where(oru_do_nvlist_new());
            if (!where)
                return;
            oru_do_nvlist_add_int(where.get(), "foo", 1);
            oru_do_nvlist_add_int(where.get(), "mtu >", 5);
            if (get_next(where.get()) == ORU_OK) {
                const bool complete = ctx->args.get_next.condition != nullptr &&
                                      ctx->args.get_next.nlist_where != nullptr &&
                                      ctx->args.get_next.vlist_where != nullptr &&
                                      names_in(where.get()) == Names{"mtu >"};
                EXPECT_TRUE(complete || oom_hit());
            } else {
                EXPECT_TRUE(oom_hit());
            }
            reset();
        },
        {.promised_deaths = {}, .at_least = 8});
}

TEST(PrCtxMemory, RecordsAreNullWithoutIt) {
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_pr_instance_ctx_new(), nullptr);
    EXPECT_EQ(oru_pr_hex_data_new(), nullptr);
    poolheap_fail_off();
}

}  // namespace
