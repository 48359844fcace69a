// docs/values.md, row by row.
#include <cstdlib>

#include "oru/value.h"
#include "tests/support/owned.h"
#include "tests/unit/do/docs_rows.h"

namespace {

using oru::test::Cell;
using oru::test::docs_rows;
using oru::test::Row;
using oru::test::Strbuf;
using oru::test::Value;

std::vector<Row> rows(const char *name) {
    return docs_rows("values.md", name);
}

int32_t type_of(const Cell &cell) {
    const std::string name = cell.text();
    const int32_t type = oru_do_get_typecode_by_typestr(name.c_str());
    EXPECT_TRUE(type >= 0 || name == "null") << name;
    return type >= 0 ? type : ORU_DO_TYPE_NULL;
}

Value read(const Cell &type, const Cell &text) {
    int32_t err = 0;
    Value val(oru_do_value_new_from_string(text.text().c_str(), type_of(type), &err));
    EXPECT_EQ(err, 0) << text.text();
    return val;
}

Value derived(Value val, const Cell &name) {
    if (!name.is_none())
        oru_do_value_set_typedef_name(val.get(), name.text().c_str());
    return val;
}

std::string printed(const Value &val, uint32_t opts = 0) {
    const Strbuf buf(oru_do_strbuf_new());
    EXPECT_EQ(oru_do_value_to_strbuf_opt(val.get(), 0, buf.get(), opts), 0);
    return oru_do_strbuf_to_string(buf.get());
}

// Bits are told by how many there are.
void expect_reads_as(const Value &val, const Cell &cell) {
    int32_t err = 0;
    ORUDoVlist *bits = oru_do_value_get_bits(val.get(), &err);
    if (err != 0) {
        EXPECT_EQ(printed(val), cell.text());
    } else {
        EXPECT_EQ(oru_do_vlist_get_len(bits), cell.text() == "two enumerations" ? 2 : 0);
    }
}

TEST(ValueDocs, Types) {
    const auto all = rows("types");
    EXPECT_EQ(all.size(), 25u);
    for (const Row &row : all)
        EXPECT_EQ(oru_do_get_typestr_by_typecode(std::stoi(row[0].text())), row[1].text());
}

TEST(ValueDocs, Texts) {
    for (const Row &row : rows("parse")) {
        int32_t err = 0;
        const Value val(oru_do_value_new_from_string(row[1].text().c_str(), type_of(row[0]), &err));
        EXPECT_EQ(std::to_string(err), row[2].text()) << row[0].text() << ' ' << row[1].text();
        const bool is_blank = row[3].words.empty() && row[3].code.empty();
        EXPECT_EQ(val == nullptr, is_blank) << row[0].text() << ' ' << row[1].text();
        if (val != nullptr && !is_blank)
            expect_reads_as(val, row[3]);
    }
}

TEST(ValueDocs, Numbers) {
    for (const Row &row : rows("numbers")) {
        int32_t err = 0;
        const double number = std::strtod(row[1].text().c_str(), nullptr);
        const Value val(oru_do_value_new_from_number(type_of(row[0]), &err, number));
        EXPECT_EQ(std::to_string(err), row[2].text()) << row[1].text();
        EXPECT_EQ(printed(val), row[3].text());
    }
}

TEST(ValueDocs, TextForms) {
    for (const Row &row : rows("prints"))
        EXPECT_EQ(printed(derived(read(row[0], row[2]), row[1])), row[3].text());
}

TEST(ValueDocs, XmlForms) {
    for (const Row &row : rows("xml")) {
        const Value val = derived(read(row[0], row[2]), row[1]);
        const Strbuf buf(oru_do_strbuf_new());
        EXPECT_EQ(oru_do_value_to_xml(nullptr, "a", val.get(), buf.get()), 0);
        EXPECT_EQ(oru_do_strbuf_to_string(buf.get()), row[3].text());
    }
}

TEST(ValueDocs, Secrets) {
    for (const Row &row : rows("secrets")) {
        const Value val = derived(Value(oru_do_value_new_string(row[1].text().c_str())), row[0]);
        EXPECT_EQ(printed(val, ORU_DO_OPT_HIDE_SECRETS), row[2].text());
        EXPECT_EQ(printed(val), row[1].text());
    }
}

TEST(ValueDocs, Equality) {
    for (const Row &row : rows("equality")) {
        const Value a = read(row[0], row[1]);
        const Value b = read(row[2], row[3]);
        EXPECT_EQ(oru_do_value_equals(a.get(), b.get()) != 0, row[4].text() == "yes")
            << row[1].text();
    }
}

TEST(ValueDocs, Order) {
    for (const Row &row : rows("order")) {
        const Value a = read(row[0], row[1]);
        const Value b = read(row[2], row[3]);
        EXPECT_EQ(std::to_string(oru_do_value_compare(a.get(), b.get())), row[4].text())
            << row[0].text() << ' ' << row[1].text();
        EXPECT_EQ(std::to_string(oru_do_value_compare_nostrict(a.get(), b.get())), row[5].text())
            << row[0].text() << ' ' << row[1].text();
    }
}

}  // namespace
