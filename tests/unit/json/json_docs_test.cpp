// docs/json.md and docs/expressions.md, row by row.
#include <sstream>

#include "oru/vlist.h"
#include "tests/unit/do/docs_rows.h"
#include "tests/unit/json/kinds.h"
#include "tests/unit/json/support.h"

namespace oru::test {
namespace {

constexpr const char *kPage = "json.md";

std::string in_text_form(const Value &value) {
    return value != nullptr ? json_of(value.get()) : "none";
}

// "none" and "none, CODE" in words of the reader.
std::string outcome(const Cell &cell) {
    if (!cell.code.empty())
        return cell.text();
    const size_t comma = cell.words.find(", ");
    return comma == std::string::npos ? "no object"
                                      : "no object, code" + cell.words.substr(comma + 1);
}

std::string with_tag(const std::string &text, const std::string &tag) {
    return "{\"" + tag + text.substr(text.find("\":"));
}

TEST(JsonDocs, Values) {
    const auto all = docs_rows(kPage, "values");
    EXPECT_EQ(all.size(), 25u);
    for (const Row &row : all) {
        const std::string tagged = row[2].text();
        const Value value = value_from(tagged);
        ASSERT_NE(value, nullptr) << tagged;
        const int32_t type = oru_do_get_typecode_by_typestr(row[0].text().c_str());
        EXPECT_EQ(oru_do_value_get_type(value.get()), type) << tagged;
        EXPECT_EQ(json_of(value.get()), tagged);
        EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_COMPACT), row[3].text());
        EXPECT_EQ(oru_json_get_type_info_by_value_type_code(type)->tag, row[1].text());
        for (const std::string &tag : row[1].code)
            EXPECT_EQ(in_text_form(value_from(with_tag(tagged, tag))), tagged) << tag;
    }
}

TEST(JsonDocs, Lists) {
    for (const Row &row : docs_rows(kPage, "lists")) {
        const std::string text = "{\"%vlist\":[" + row[0].text() + "]}";
        ORUDoVlist *list = oru_do_vlist_from_json(text.data(), size_of(text), nullptr);
        ASSERT_NE(list, nullptr) << text;
        const auto options = static_cast<uint32_t>(std::stoul(row[1].words));
        EXPECT_EQ(written([&](ORUDoStrbuf *buf) {
                      return oru_do_vlist_to_json_opt(list, buf, options, nullptr);
                  }),
                  row[2].text());
        oru_do_vlist_deref(list);
    }
}

// One of the two forms reads, and what it gives is written as both.
TEST(JsonDocs, Objects) {
    for (const Row &row : docs_rows(kPage, "objects")) {
        const Kind *kind = kind_named(row[0].text().substr(1));
        ASSERT_NE(kind, nullptr) << row[0].text();
        const std::string tagged = row[1].text();
        const std::string compact = row[2].words == "the same" ? tagged : row[2].text();
        const bool reads = written_again(*kind, tagged, 0) == tagged;
        const std::string &source = reads ? tagged : compact;
        EXPECT_EQ(written_again(*kind, source, 0), tagged);
        EXPECT_EQ(written_again(*kind, source, ORU_JSON_OPT_COMPACT), compact);
    }
}

TEST(JsonDocs, Descriptions) {
    for (const Row &row : docs_rows(kPage, "descriptions")) {
        const Kind *kind = kind_named(row[0].text().substr(1));
        ASSERT_NE(kind, nullptr) << row[0].text();
        EXPECT_EQ(written_again(*kind, row[2].text(), 0), row[1].text());
        EXPECT_NE(written_again(*kind, row[1].text(), 0), row[1].text());
    }
}

TEST(JsonDocs, ExpectedCodes) {
    for (const Row &row : docs_rows(kPage, "expected")) {
        std::string name = row[0].text();
        name = name.substr(std::string("oru_do_").size());
        name = name.substr(0, name.find("_from_json"));
        const auto *info =
            oru_json_get_type_info_by_type_code(std::stoll(row[1].text(), nullptr, 16));
        ASSERT_NE(info, nullptr) << name;
        EXPECT_EQ(info->tag, "%" + name);
        EXPECT_NE(kind_named(name), nullptr) << name;
    }
}

TEST(JsonDocs, ValuesRead) {
    for (const Row &row : docs_rows(kPage, "reads"))
        EXPECT_EQ(read_back(row[0].text()), row[1].text()) << row[0].text();
}

TEST(JsonDocs, WhatReadsOtherwise) {
    for (const char *form : {"tagged", "compact"}) {
        const uint32_t options = form == std::string("compact") ? ORU_JSON_OPT_COMPACT : 0;
        for (const Row &row : docs_rows(kPage, form)) {
            const Kind *kind = kind_named(row[0].text());
            ASSERT_NE(kind, nullptr) << row[0].text();
            EXPECT_EQ(written_again(*kind, row[1].text(), options), outcome(row[2]))
                << row[1].text();
            EXPECT_NE(row[1].text(), row[2].text()) << "is no exception";
        }
    }
}

TEST(JsonDocs, Errors) {
    for (const Row &row : docs_rows(kPage, "errors")) {
        if (!row[2].is_none()) {
            EXPECT_EQ(std::to_string(code_of(parsed(row[2].text()))), row[0].words);
        }
    }
}

std::string page(const std::string &name) {
    std::ifstream file(std::string(ORU_DOCS_DIR) + "/" + name);
    std::stringstream all;
    all << file.rdbuf();
    return all.str();
}

TEST(JsonDocs, HaveEveryTag) {
    const std::string pages = page(kPage) + page("expressions.md");
    const auto *row = oru_json_get_type_info("%ubyte", 6);
    for (; row->tag != nullptr; ++row) {
        const std::string tag = row->tag;
        EXPECT_TRUE(pages.find("`" + tag + "`") != std::string::npos ||
                    pages.find("\"" + tag + "\"") != std::string::npos)
            << tag;
    }
}

TEST(ExpressionDocs, Results) {
    for (const Row &row : docs_rows("expressions.md", "results")) {
        const std::string text = row[0].text();
        const Value value(
            oru_do_json_eval_expr(text.data(), size_of(text), nullptr, nullptr, nullptr, nullptr));
        ASSERT_NE(value, nullptr) << text;
        EXPECT_EQ(json_of(value.get(), ORU_JSON_OPT_COMPACT), row[1].text()) << text;
    }
}

}  // namespace
}  // namespace oru::test
