#include <oruplatform/poolheap.h>

#include "oru/pr_walk.h"
#include "tests/support/death.h"
#include "tests/unit/pr/pr_support.h"

namespace {

using oru::test::names_in;
using oru::test::names_of;
using oru::test::Nlist;
using oru::test::Nvlist;
using oru::test::Strbuf;
using oru::test::where_of;

using Texts = std::vector<std::string>;

// ---- Attributes of order and where ----

struct Wanted {
    Nlist attrs{names_of({"first"})};
    Nlist order_names{oru_do_nlist_new()};
    char directions[10] = "---------";

    void ask(ORUDoNvlist *where, ORUDoNlist *order) {
        oru_pr_get_where_and_orderby_attrs(where, order, attrs.get(), order_names.get(),
                                           directions);
    }
};

TEST(PrWhereAndOrder, NamesOfTheOrderComeBeforeThoseOfTheWhereClause) {
    Wanted wanted;
    const Nvlist where = where_of({{"mtu >=", 1}, {"speed", 2}, {" AND ", 3}});
    const Nlist order = names_of({"slot", "port desc"});
    wanted.ask(where.get(), order.get());
    EXPECT_EQ(names_in(wanted.attrs.get()), (Texts{"first", "slot", "port", "mtu", "speed", ""}));
    EXPECT_EQ(names_in(wanted.order_names.get()), (Texts{"slot", "port"}));
    EXPECT_STREQ(wanted.directions, "ad-------");
}

TEST(PrWhereAndOrder, EachWordHasItsDirection) {
    Wanted wanted;
    const Nlist order =
        names_of({"a", "b desc", "c snmp", "d asc", "e DESC", "f ", "g descending", "h snmpv2"});
    wanted.ask(nullptr, order.get());
    EXPECT_EQ(std::string(wanted.directions), "adsaaaaa-");
    EXPECT_EQ(names_in(wanted.order_names.get()), (Texts{"a", "b", "c", "d", "e", "f", "g", "h"}));
}

TEST(PrWhereAndOrder, TheNameEndsAtItsFirstBlank) {
    Wanted wanted;
    const Nvlist where = where_of({{"mtu>=", 1}, {"a b c", 2}});
    const Nlist order = names_of({"x  desc ", " desc"});
    wanted.ask(where.get(), order.get());
    EXPECT_EQ(names_in(wanted.attrs.get()), (Texts{"first", "x", "", "mtu>=", "a"}));
    EXPECT_STREQ(wanted.directions, "dd-------");
}

TEST(PrWhereAndOrder, NothingIsLeftOutForBeingThereAlready) {
    Wanted wanted;
    const Nvlist where = where_of({{"first", 1}, {"first >", 2}});
    const Nlist order = names_of({"first"});
    wanted.ask(where.get(), order.get());
    EXPECT_EQ(names_in(wanted.attrs.get()), (Texts{"first", "first", "first", "first"}));
}

TEST(PrWhereAndOrder, EitherMayBeNull) {
    Wanted wanted;
    wanted.ask(nullptr, nullptr);
    EXPECT_EQ(names_in(wanted.attrs.get()), Texts{"first"});
    oru_pr_get_where_and_orderby_attrs(nullptr, nullptr, wanted.attrs.get(), nullptr, nullptr);
    wanted.ask(where_of({{"mtu", 1}}).get(), nullptr);
    EXPECT_EQ(names_in(wanted.attrs.get()), (Texts{"first", "mtu"}));
    EXPECT_STREQ(wanted.directions, "---------");
}

TEST(PrWhereAndOrder, WhatItFillsIsRequired) {
    Wanted wanted;
    const Nlist order = names_of({"a"});
    ORUDoNlist *o = order.get();
    ORUDoNlist *list = wanted.attrs.get();
    char direction[2];
    EXPECT_ASSERTION(oru_pr_get_where_and_orderby_attrs(nullptr, o, nullptr, list, direction),
                     "attrs");
    EXPECT_ASSERTION(oru_pr_get_where_and_orderby_attrs(nullptr, o, list, nullptr, direction),
                     "order_names");
    EXPECT_ASSERTION(oru_pr_get_where_and_orderby_attrs(nullptr, o, list, list, nullptr),
                     "directions");
}

TEST(PrWhereAndOrder, WithoutMemoryNamesAreLeftOut) {
    Wanted wanted;
    const Nvlist where = where_of({{"mtu", 1}});
    const Nlist order = names_of({"a desc"});
    poolheap_fail_nth(1, 1);
    wanted.ask(where.get(), order.get());
    poolheap_fail_off();
    EXPECT_EQ(names_in(wanted.attrs.get()), Texts{"first"});
    EXPECT_EQ(names_in(wanted.order_names.get()), Texts{});
}

// ---- The order of keys ----

TEST(PrOrderByKey, AnEmptyOrderIsThatOfAnyKeys) {
    const char *const keys[] = {"a", "b"};
    EXPECT_EQ(oru_pr_is_order_by_key(nullptr, keys, 2), 1);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({}).get(), keys, 2), 1);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({}).get(), nullptr, 0), 1);
}

TEST(PrOrderByKey, OnlyAllKeysInTheirOrderAre) {
    const char *const keys[] = {"a", "b"};
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"a", "b"}).get(), keys, 2), 1);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"b", "a"}).get(), keys, 2), 0);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"a"}).get(), keys, 2), 0);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"a", "b", "c"}).get(), keys, 2), 0);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"a", "c"}).get(), keys, 2), 0);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"a", "b desc"}).get(), keys, 2), 0);
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"a"}).get(), nullptr, 0), 0);
    // The second of two equal names stands in the place of the first.
    const char *const twice[] = {"a", "a"};
    EXPECT_EQ(oru_pr_is_order_by_key(names_of({"a", "a"}).get(), twice, 2), 0);
}

TEST(PrOrderByKey, KeysAreRequired) {
    const Nlist order = names_of({"a"});
    EXPECT_ASSERTION(oru_pr_is_order_by_key(order.get(), nullptr, 1), "keys");
}

// ---- Numbers of rows ----

class PrResultIndex : public oru::test::Request {
  public:
    PrResultIndex() {
        oru_pr_crudx_handler_add_prop_cb(crudx, "_resultIndex", oru::test::read_nothing, nullptr);
    }
    int32_t needed(const std::vector<std::pair<std::string, int32_t>> &items) {
        const Nvlist where = where_of(items);
        get_next(where.get());
        return oru_pr_need_result_idx(ctx);
    }
};

TEST_F(PrResultIndex, IsNeededBehindANumber) {
    EXPECT_EQ(needed({{"_resultIndex >", 5}}), 1);
    EXPECT_EQ(needed({{"_resultIndex >", 0}}), 1);
    EXPECT_EQ(needed({{"mtu", 1}, {"_resultIndex >", 5}}), 1);
}

TEST_F(PrResultIndex, IsNeededFromANumberOtherThanZero) {
    EXPECT_EQ(needed({{"_resultIndex >=", 5}}), 1);
    EXPECT_EQ(needed({{"_resultIndex >=", -1}}), 1);
    EXPECT_EQ(needed({{"_resultIndex >=", 0}}), 0);
    EXPECT_EQ(needed({{"_resultIndex >=", 0}, {"_resultIndex >=", 2}}), 1);
}

TEST_F(PrResultIndex, IsNotNeededByOtherItems) {
    EXPECT_EQ(needed({}), 0);
    EXPECT_EQ(
        needed({{"_resultIndex", 5}, {"_resultIndex <", 5}, {"_resultIndex>", 5}, {"mtu >", 5}}),
        0);
}

TEST_F(PrResultIndex, ANumberIsAnInteger) {
    const Nvlist where(oru_do_nvlist_new());
    oru_do_nvlist_add_string(where.get(), "_resultIndex >=", "5");
    get_next(where.get());
    EXPECT_EQ(oru_pr_need_result_idx(ctx), 0);
}

TEST_F(PrResultIndex, IsNotNeededOutsideWalks) {
    EXPECT_EQ(oru_pr_need_result_idx(nullptr), 0);
    get_next();
    EXPECT_EQ(oru_pr_need_result_idx(ctx), 0);
    for (const int32_t code : {1, 2, 4, 5, 6, 7, 8, 9, 10}) {
        make(code);
        EXPECT_EQ(oru_pr_need_result_idx(ctx), 0) << code;
    }
}

// ---- Identities ----

TEST(PrGetNextId, IsTheWhereClauseAndTheNames) {
    const Strbuf buf(oru_do_strbuf_new());
    const Nvlist where = where_of({{"mtu >", 5}});
    oru_do_strbuf_add_string(buf.get(), "id:");
    EXPECT_EQ(oru_pr_make_get_next_id(where.get(), names_of({"a", "b"}).get(),
                                      names_of({"c"}).get(), buf.get()),
              0);
    EXPECT_STREQ(oru_do_strbuf_to_string(buf.get()),
                 R"(id:{"%nvlist":{"mtu >":{"%int":5}}}+a+b+c)");
}

TEST(PrGetNextId, OfNothingIsNothing) {
    const Strbuf buf(oru_do_strbuf_new());
    const Nlist empty = names_of({});
    EXPECT_EQ(oru_pr_make_get_next_id(nullptr, empty.get(), empty.get(), buf.get()), 0);
    EXPECT_EQ(oru_pr_make_get_next_id(nullptr, nullptr, nullptr, buf.get()), 0);
    EXPECT_EQ(oru_do_strbuf_get_len(buf.get()), 0);
}

TEST(PrGetNextId, ReportsTheStateOfTheBuffer) {
    const Strbuf buf(oru_do_strbuf_new());
    const Nlist names = names_of({"a"});
    const std::string fill(5000, 'x');
    const Nlist more = names_of({fill.c_str()});
    poolheap_fail_nth(1, 1);
    const int32_t code = oru_pr_make_get_next_id(nullptr, names.get(), more.get(), buf.get());
    poolheap_fail_off();
    EXPECT_EQ(code, ORU_RC_MALLOC);
    EXPECT_EQ(code, oru_do_strbuf_get_err(buf.get()));
}

TEST(PrGetNextId, TheBufferIsRequired) {
    const Nlist names = names_of({"a"});
    EXPECT_EQ(oru_pr_make_get_next_id(nullptr, nullptr, nullptr, nullptr), ORU_RC_MALLOC);
    EXPECT_ASSERTION(oru_pr_make_get_next_id(nullptr, names.get(), nullptr, nullptr), "strbuf");
}

// ---- Tables ----

TEST(PrVtableFree, DropsOneReference) {
    ORUDoVtable *table = oru_do_vtable_new();
    oru_do_vtable_ref(table);
    oru_pr_vtable_free_fn(table, table);
    EXPECT_EQ(oru_do_vtable_get_row_num(table), 0);
    oru_pr_vtable_free_fn(nullptr, table);
    oru_pr_vtable_free_fn(nullptr, nullptr);
}

}  // namespace
