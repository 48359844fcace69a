// The rows of tables in the pages for users. A table that is a test has a comment in front of its
// head: "<!-- rows: NAME -->", which readers do not see.
#ifndef ORU_TESTS_UNIT_DO_DOCS_ROWS_H
#define ORU_TESTS_UNIT_DO_DOCS_ROWS_H

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace oru::test {

// What stands in a cell: code in backticks, or words. "none" is nothing, "*(empty)*" a text without
// characters.
struct Cell {
    std::string words;
    std::vector<std::string> code;

    bool is_none() const { return words == "none"; }
    // The first code, or the words where a cell has no code.
    std::string text() const {
        if (!code.empty())
            return code.front();
        return words == "*(empty)*" ? "" : words;
    }
    const char *text_or_null() const {
        if (is_none())
            return nullptr;
        return code.empty() ? "" : code.front().c_str();
    }
};

using Row = std::vector<Cell>;

inline Cell cell_of(std::string text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return {};
    text = text.substr(first, text.find_last_not_of(' ') + 1 - first);
    Cell cell;
    for (size_t at = 0; at < text.size();) {
        const size_t end = text[at] == '`' ? text.find('`', at + 1) : std::string::npos;
        if (end == std::string::npos) {
            cell.words += text[at++];
        } else {
            cell.code.push_back(text.substr(at + 1, end - at - 1));
            at = end + 1;
        }
    }
    return cell;
}

inline Row row_of(const std::string &line) {
    Row row;
    for (size_t at = 1, end; (end = line.find('|', at)) != std::string::npos; at = end + 1)
        row.push_back(cell_of(line.substr(at, end - at)));
    return row;
}

// The rows of all tables of that name, without their heads.
inline std::vector<Row> docs_rows(const std::string &page, const std::string &name) {
    std::ifstream file(std::string(ORU_DOCS_DIR) + "/" + page);
    EXPECT_TRUE(file.is_open()) << page;
    std::vector<Row> rows;
    std::string line;
    while (std::getline(file, line)) {
        if (line != "<!-- rows: " + name + " -->")
            continue;
        std::getline(file, line);  // the head, and the line below it
        std::getline(file, line);
        while (std::getline(file, line) && line.starts_with("|"))
            rows.push_back(row_of(line));
    }
    EXPECT_FALSE(rows.empty()) << page << " has no table " << name;
    return rows;
}

}  // namespace oru::test

#endif
