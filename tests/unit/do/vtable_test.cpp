#include "oru/vtable.h"

#include <gtest/gtest.h>
#include <oruplatform/poolheap.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "oru/name.h"
#include "oru/ntlist.h"
#include "oru/print.h"
#include "oru/strbuf.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "tests/support/death.h"
#include "tests/support/oom.h"
#include "tests/support/trace_capture.h"

namespace {

class Vtable : public testing::Test {
  protected:
    Vtable() {
        int32_t number = 1;
        for (ORUDoVlist *row : rows)
            oru_do_vlist_add_int(row, number++);
    }
    ~Vtable() override {
        for (ORUDoVlist *row : rows)
            oru_do_vlist_deref(row);
        oru_do_vtable_deref(table);
    }

    void fill() {
        for (ORUDoVlist *row : rows)
            oru_do_vtable_add(table, row);
    }

    ORUDoVtable *table = oru_do_vtable_new();
    ORUDoVlist *rows[2] = {oru_do_vlist_new(), oru_do_vlist_new()};
};

TEST_F(Vtable, StartsEmpty) {
    EXPECT_EQ(oru_do_vtable_get_row_num(table), 0);
    EXPECT_EQ(oru_do_vtable_get(table, 0), nullptr);
    EXPECT_EQ(oru_do_vtable_get_column_info(table), nullptr);
    EXPECT_EQ(oru_do_vtable_get_column_num(table), -1);
    EXPECT_EQ(oru_do_vtable_get_column_types(table), nullptr);
}

TEST_F(Vtable, ColumnsAreDescribedByASharedList) {
    ORUDoNtlist *columns = oru_do_ntlist_new();
    ORUDoName *name = oru_do_name_new("c");
    oru_do_vtable_set_column_info(table, columns);
    EXPECT_EQ(oru_do_vtable_get_column_num(table), 0);
    oru_do_ntlist_add_builtin_type(columns, name, ORU_DO_TYPE_INT, nullptr);
    oru_do_ntlist_add_builtin_type(columns, name, ORU_DO_TYPE_INT, nullptr);
    EXPECT_EQ(oru_do_vtable_get_column_num(table), 2);
    EXPECT_EQ(oru_do_vtable_get_column_info(table), columns);
    EXPECT_EQ(oru_do_vtable_get_column_types(table), nullptr);
    oru_do_ntlist_deref(columns);
    oru_do_vtable_set_column_info(table, oru_do_vtable_get_column_info(table));
    EXPECT_EQ(oru_do_vtable_get_column_num(table), 2);
    oru_do_vtable_set_column_info(table, nullptr);
    EXPECT_EQ(oru_do_vtable_get_column_num(table), -1);
    oru_do_name_deref(name);
}

TEST_F(Vtable, RowsAreSharedAndStayInOrder) {
    EXPECT_EQ(oru_do_vtable_add(table, rows[0]), 1);
    EXPECT_EQ(oru_do_vtable_add(table, rows[1]), 2);
    EXPECT_EQ(oru_do_vtable_add(table, nullptr), -1);
    EXPECT_EQ(oru_do_vtable_get_row_num(table), 2);
    EXPECT_EQ(oru_do_vtable_get(table, 0), rows[0]);
    EXPECT_EQ(oru_do_vtable_get(table, 1), rows[1]);
    EXPECT_EQ(oru_do_vtable_get(table, 2), nullptr);
    EXPECT_EQ(oru_do_vtable_get(table, -1), nullptr);
}

TEST_F(Vtable, ClearKeepsTheColumns) {
    ORUDoNtlist *columns = oru_do_ntlist_new();
    oru_do_vtable_set_column_info(table, columns);
    oru_do_ntlist_deref(columns);
    fill();
    oru_do_vtable_clear(table);
    EXPECT_EQ(oru_do_vtable_get_row_num(table), 0);
    EXPECT_EQ(oru_do_vtable_get_column_info(table), columns);
    EXPECT_EQ(oru_do_vtable_add(table, rows[1]), 1);
    EXPECT_EQ(oru_do_vtable_get(table, 0), rows[1]);
}

TEST_F(Vtable, WalksAllRowsOrFromAnItem) {
    fill();
    ORUDoIter iter;
    oru_do_vtable_iter(table, &iter);
    EXPECT_NE(oru_do_vtable_has_next(&iter), 0);
    EXPECT_EQ(oru_do_vtable_get_next(&iter), rows[0]);
    ORUDoVtableItem *second = oru_do_vtable_get_next_item(&iter);
    EXPECT_EQ(oru_do_vtable_item_get_row(second), rows[1]);
    EXPECT_EQ(oru_do_vtable_has_next(&iter), 0);
    EXPECT_EQ(oru_do_vtable_get_next(&iter), nullptr);
    EXPECT_EQ(oru_do_vtable_get_next_item(&iter), nullptr);

    oru_do_vtable_iter_reset(table, second, &iter);
    EXPECT_EQ(oru_do_vtable_get_next(&iter), rows[1]);
    EXPECT_EQ(oru_do_vtable_get_next(&iter), nullptr);
    oru_do_vtable_iter_reset(table, nullptr, &iter);
    EXPECT_EQ(oru_do_vtable_get_next(&iter), rows[0]);
    EXPECT_EQ(iter.coll_type, DO_COLL_PROPERTIES_LIST);
}

TEST_F(Vtable, PrintsRowsWithoutIndent) {
    ORUDoStrbuf *text = oru_do_strbuf_new();
    EXPECT_EQ(oru_do_vtable_to_strbuf(nullptr, 1, text), 0);
    EXPECT_EQ(oru_do_vtable_to_strbuf_with_defaults(nullptr, 1, text), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(text), "");
    EXPECT_EQ(oru_do_vtable_to_strbuf(table, 1, text), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(text), "[\n]\n");
    oru_do_strbuf_clear(text);
    fill();
    EXPECT_EQ(oru_do_vtable_to_strbuf(table, 3, text), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(text), "[\n[\n\t1\n]\n,\n[\n\t2\n]\n]\n");
    oru_do_strbuf_clear(text);
    oru_do_value_set_default_flag(oru_do_vlist_get_value(rows[1], 0));
    EXPECT_EQ(oru_do_vtable_to_strbuf_with_defaults(table, 3, text), 0);
    EXPECT_STREQ(oru_do_strbuf_to_string(text), "[\n[\n\t1\n]\n,\n[\n\t2 (default)\n]\n]\n");
    oru_do_strbuf_deref(text);
}

TEST_F(Vtable, PrintsOnAStream) {
    fill();
    oru_do_value_set_default_flag(oru_do_vlist_get_value(rows[0], 0));
    FILE *stream = std::tmpfile();
    EXPECT_EQ(oru_do_print_vtable(stream, 0, table), 0);
    EXPECT_EQ(oru_do_print_vtable_with_defaults(stream, 0, table), 0);
    std::rewind(stream);
    char text[128] = "";
    text[std::fread(text, 1, sizeof text - 1, stream)] = '\0';
    EXPECT_STREQ(text,
                 "[\n[\n\t1\n]\n,\n[\n\t2\n]\n]\n"
                 "[\n[\n\t1 (default)\n]\n,\n[\n\t2\n]\n]\n");
    std::fclose(stream);
}

TEST_F(Vtable, ReleasesItsRowsBeforeTheColumns) {
    ORUDoNtlist *columns = oru_do_ntlist_new();
    oru_do_vtable_set_column_info(table, columns);
    oru_do_vtable_add(table, rows[1]);
    oru_do_vtable_add(table, rows[0]);
    const auto words = [](const char *type, void *object) {
        char text[100];
        std::snprintf(text, sizeof text, "oru deref %s %p ", type, object);
        return std::string(text) + (std::strcmp(type, "oru_do_vtable") == 0 ? "1" : "2");
    };
    const std::vector<std::string> expected = {
        words("oru_do_vtable", table), words("oru_do_vlist", rows[1]),
        words("oru_do_vlist", rows[0]), words("oru_do_ntlist", columns)};
    {
        const oru::test::TraceCapture traces(8);
        oru_do_vtable_deref(table);
        table = nullptr;
        EXPECT_EQ(traces.at(8), expected);
    }
    oru_do_ntlist_deref(columns);
}

TEST_F(Vtable, ARowWithoutMemoryCountsAndTheNextStartsANewChain) {
    oru_do_vtable_add(table, rows[0]);
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_vtable_add(table, rows[0]), 2);
    poolheap_fail_off();
    EXPECT_EQ(oru_do_vtable_get_row_num(table), 2);
    EXPECT_EQ(oru_do_vtable_get(table, 1), nullptr);
    EXPECT_EQ(oru_do_vtable_add(table, rows[1]), 3);
    EXPECT_EQ(oru_do_vtable_get(table, 0), rows[1]);
    EXPECT_EQ(oru_do_vtable_get(table, 1), nullptr);
}

TEST_F(Vtable, AFirstRowWithoutMemoryCountsToo) {
    poolheap_fail_nth(1, 0);
    EXPECT_EQ(oru_do_vtable_add(table, rows[0]), 1);
    poolheap_fail_off();
    EXPECT_EQ(oru_do_vtable_get(table, 0), nullptr);
    ORUDoIter iter;
    oru_do_vtable_iter(table, &iter);
    EXPECT_EQ(oru_do_vtable_has_next(&iter), 0);
    EXPECT_EQ(oru_do_vtable_add(table, rows[1]), 2);
    EXPECT_EQ(oru_do_vtable_get(table, 0), rows[1]);
    oru_do_vtable_clear(table);
    EXPECT_EQ(oru_do_vtable_get_row_num(table), 0);
}

TEST_F(Vtable, ANullRowIsRefusedWithoutMemoryToo) {
    poolheap_fail_nth(1, 1);
    EXPECT_EQ(oru_do_vtable_add(table, nullptr), -1);
    poolheap_fail_off();
    EXPECT_EQ(oru_do_vtable_get_row_num(table), 0);
}

TEST_F(Vtable, RowsOfAnyLengthAndTypeAreKept) {
    ORUDoNtlist *columns = oru_do_ntlist_new();
    ORUDoName *name = oru_do_name_new("c");
    oru_do_ntlist_add_builtin_type(columns, name, ORU_DO_TYPE_STRING, nullptr);
    oru_do_vtable_set_column_info(table, columns);
    ORUDoVlist *empty = oru_do_vlist_new();
    EXPECT_EQ(oru_do_vtable_add(table, rows[0]), 1);
    EXPECT_EQ(oru_do_vtable_add(table, empty), 2);
    EXPECT_EQ(oru_do_vtable_add(table, rows[0]), 3);
    EXPECT_EQ(oru_do_vtable_get(table, 1), empty);
    EXPECT_EQ(oru_do_vtable_get(table, 2), rows[0]);
    EXPECT_EQ(oru_do_vtable_get_column_num(table), 1);
    oru_do_vlist_deref(empty);
    oru_do_name_deref(name);
    oru_do_ntlist_deref(columns);
}

TEST_F(Vtable, AnEmptyTableHasNothingToWalk) {
    ORUDoIter iter;
    oru_do_vtable_iter(table, &iter);
    EXPECT_EQ(oru_do_vtable_has_next(&iter), 0);
    EXPECT_EQ(oru_do_vtable_get_next(&iter), nullptr);
    oru_do_vtable_iter_reset(table, nullptr, &iter);
    EXPECT_EQ(oru_do_vtable_get_next_item(&iter), nullptr);
}

TEST(VtableMemory, ATableIsMadeOrNot) {
    oru::test::sweep_oom([] {
        ORUDoVtable *table = oru_do_vtable_new();
        EXPECT_EQ(table == nullptr, oru::test::oom_hit());
        oru_do_vtable_deref(table);
    });
}

TEST_F(Vtable, EveryAllocationMayFail) {
    oru::test::sweep_oom(
        [this] {
            ORUDoVtable *made = oru_do_vtable_new();
            if (made == nullptr)
                return;
            EXPECT_EQ(oru_do_vtable_add(made, rows[0]), 1);
            EXPECT_EQ(oru_do_vtable_add(made, rows[1]), 2);
            EXPECT_EQ(
                oru_do_vtable_get(made, 0) != nullptr && oru_do_vtable_get(made, 1) != nullptr,
                !oru::test::oom_hit());
            oru_do_vtable_deref(made);
        },
        {.promised_deaths = {}, .at_least = 3});
}

TEST_F(Vtable, TheBufferTellsOfWhatIsMissing) {
    oru_do_vlist_add_string(rows[0], std::string(300, 't').c_str());
    oru_do_vlist_add_string(rows[1], std::string(600, 't').c_str());
    fill();
    for (const auto print : {oru_do_vtable_to_strbuf, oru_do_vtable_to_strbuf_with_defaults}) {
        oru::test::sweep_oom(
            [this, print] {
                ORUDoStrbuf *text = oru_do_strbuf_new();
                if (text == nullptr)
                    return;
                EXPECT_EQ(print(table, 1, text), 0);
                EXPECT_EQ(oru_do_strbuf_get_err(text), oru::test::oom_hit() ? 10002 : 0);
                oru_do_strbuf_deref(text);
            },
            {.promised_deaths = {}, .at_least = 4});
    }
}

// ---- The records ----

struct VtableItemImage {
    ORUDoVlist *row;
    VtableItemImage *next;
    uint32_t ref_count;
};

struct VtableImage {
    ORUDoNtlist *column_info;
    VtableItemImage *first;
    VtableItemImage *last;
    int32_t row_count;
    uint32_t ref_count;
};

TEST_F(Vtable, TheRecordsHaveTheirFieldsInOrder) {
    ORUDoNtlist *columns = oru_do_ntlist_new();
    oru_do_vtable_set_column_info(table, columns);
    fill();
    auto &image = *reinterpret_cast<VtableImage *>(table);
    EXPECT_EQ(image.column_info, columns);
    ASSERT_NE(image.first, nullptr);
    EXPECT_EQ(image.first->row, rows[0]);
    EXPECT_EQ(image.first->next, image.last);
    EXPECT_EQ(image.first->ref_count, 1u);
    EXPECT_EQ(image.last->row, rows[1]);
    EXPECT_EQ(image.last->next, nullptr);
    EXPECT_EQ(image.last->ref_count, 1u);
    EXPECT_EQ(image.row_count, 2);
    EXPECT_EQ(image.ref_count, 1u);
    poolheap_fail_nth(1, 0);
    oru_do_vtable_add(table, rows[0]);
    poolheap_fail_off();
    EXPECT_EQ(image.last, nullptr);
    EXPECT_EQ(image.row_count, 3);
    oru_do_vtable_clear(table);
    EXPECT_EQ(image.first, nullptr);
    EXPECT_EQ(image.last, nullptr);
    EXPECT_EQ(image.row_count, 0);
    oru_do_ntlist_deref(columns);
}

TEST_F(Vtable, RequiredArgumentsAreAsserted) {
    ORUDoIter iter;
    EXPECT_ASSERTION(oru_do_vtable_set_column_info(nullptr, nullptr), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_get_column_info(nullptr), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_get_column_num(nullptr), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_get_column_types(nullptr), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_add(nullptr, rows[0]), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_get_row_num(nullptr), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_get(nullptr, 0), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_clear(nullptr), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_iter(nullptr, &iter), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_iter(table, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vtable_iter_reset(nullptr, nullptr, &iter), "vtable");
    EXPECT_ASSERTION(oru_do_vtable_has_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vtable_get_next(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vtable_get_next_item(nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vtable_item_get_row(nullptr), "item");
    oru_do_iter_init(&iter);
    EXPECT_ASSERTION(oru_do_vtable_has_next(&iter), "iter->coll_type == DO_COLL_PROPERTIES_LIST");
    EXPECT_ASSERTION(oru_do_vtable_iter_reset(table, nullptr, nullptr), "iter");
    EXPECT_ASSERTION(oru_do_vtable_to_strbuf(table, 0, nullptr), "strbuf");
    EXPECT_ASSERTION(oru_do_vtable_to_strbuf_with_defaults(table, 0, nullptr), "strbuf");
    EXPECT_EQ(oru_do_vtable_ref(nullptr), nullptr);
    oru_do_vtable_deref(nullptr);
}

}  // namespace
