// docs/uris.md, row by row.
#include "oru/uri_derive.h"
#include "tests/unit/do/docs_rows.h"
#include "tests/unit/do/uri_support.h"

namespace {

using namespace oru::test;

std::vector<Row> rows(const char *name) {
    return docs_rows("uris.md", name);
}

std::string shown(const Cell &cell) {
    return cell.is_none() ? "(null)" : cell.text();
}

TEST(UriDocs, TextsRead) {
    for (const Row &row : rows("reads")) {
        std::string model;
        for (const std::string &segment : row[1].code)
            model += (model.empty() ? "" : "|") + segment;
        if (!row[2].is_none())
            model += '?' + row[2].text();
        EXPECT_EQ(model_of(row[0].text()), model) << row[0].text();
    }
}

TEST(UriDocs, TextsFail) {
    for (const Row &row : rows("fails")) {
        TraceCapture traces(3);
        EXPECT_EQ(oru_do_uri_validate_new(row[0].text().c_str()), nullptr) << row[0].text();
        ASSERT_FALSE(traces.lines().empty()) << row[0].text();
        EXPECT_EQ(traces.at(3).front(), row[1].text());
    }
}

TEST(UriDocs, Escapes) {
    size_t count = 0;
    for (const Row &row : rows("escapes")) {
        for (size_t i = 0; i < row.size(); i += 2, ++count) {
            const std::string character = row[i].code.empty() ? " " : row[i].text();
            const Buffer buf(oru_do_strbuf_new());
            EXPECT_EQ(oru_do_uri_escape_str(character.c_str(), buf.get()), 0);
            EXPECT_EQ(oru_do_strbuf_to_string(buf.get()), row[i + 1].text());
        }
    }
    EXPECT_EQ(count, 20u);
    for (const Row &row : rows("unescapes")) {
        const Buffer buf(oru_do_strbuf_new());
        EXPECT_EQ(oru_do_uri_unescape_str(row[0].text().c_str(), buf.get()), 0);
        EXPECT_EQ(oru_do_strbuf_to_string(buf.get()), row[1].text());
    }
}

TEST(UriDocs, KeyTexts) {
    for (const Row &row : rows("keys")) {
        int32_t rc = 0;
        const int32_t type = oru_do_get_typecode_by_typestr(row[0].text().c_str());
        const Value value(oru_do_value_new_from_string(row[1].text().c_str(), type, &rc));
        EXPECT_EQ(rc, 0) << row[1].text();
        const Buffer buf(oru_do_strbuf_new());
        EXPECT_EQ(oru_do_uri_value_to_keystr(value.get(), buf.get()), 0);
        EXPECT_EQ(oru_do_strbuf_to_string(buf.get()), row[2].text());
    }
}

TEST(UriDocs, AbsoluteAndRelativeForms) {
    const Uri location = unparsed("//locations;locationId=1");
    for (const Row &row : rows("absolute")) {
        const Uri uri = unparsed(row[0].text());
        EXPECT_EQ(text_of(Uri(oru_do_uri_new_absolute(uri.get(), location.get()))), shown(row[1]));
    }
    for (const Row &row : rows("relative"))
        EXPECT_EQ(text_of(Uri(oru_do_uri_new_relative(row[0].text().c_str()))), shown(row[1]));
}

TEST(UriDocs, KindsOfCollections) {
    for (const Row &row : rows("kinds")) {
        const Uri uri = unparsed(row[0].text());
        EXPECT_EQ(std::to_string(oru_do_uri_get_coll_type(uri.get())), row[1].text())
            << row[0].text();
    }
}

TEST(UriDocs, Collections) {
    for (const Row &row : rows("collections")) {
        for (const Uri &uri : {unparsed(row[0].text()), parsed(row[0].text())}) {
            const Uri coll(oru_do_uri_new_coll(uri.get(), row[1].text_or_null()));
            EXPECT_EQ(text_of(coll), shown(row[2])) << row[0].text();
        }
    }
}

TEST(UriDocs, Members) {
    const auto member = [](const Uri &coll) {
        return text_of(Uri(oru_do_uri_new_from_coll_uri(coll.get(), nullptr)));
    };
    for (const Row &row : rows("members")) {
        EXPECT_EQ(member(unparsed(row[0].text())), shown(row[1])) << row[0].text();
        EXPECT_EQ(member(parsed(row[0].text())), shown(row[2])) << row[0].text();
    }
}

TEST(UriDocs, Prefixes) {
    for (const Row &row : rows("descendants")) {
        const int32_t depth = std::stoi(row[1].text());
        const auto prefix = [depth](const Uri &uri) {
            return text_of(Uri(oru_do_uri_new_from_descendant(uri.get(), depth, nullptr)));
        };
        EXPECT_EQ(prefix(unparsed(row[0].text())), shown(row[2])) << row[0].text();
        EXPECT_EQ(prefix(parsed(row[0].text())), shown(row[3])) << row[0].text();
    }
}

}  // namespace
