// Three lines, each any text as a URI: parsed, read in every way, escaped and back, derived from
// and compared. What one way of reading a URI gives has to agree with the others, and what a maker
// makes of parts has to parse back to them.
#include "tests/fuzz/uri_fuzz.h"

#include <oruplatform/poolheap.h>

#include <algorithm>

#include "oru/uri_derive.h"

namespace {

using namespace fuzz;

// ---- Texts alone ----

void try_escaping(const std::string &text) {
    const std::string safe = escaped(text);
    CHECK(safe.find_first_of("/?;= ") == std::string::npos);
    CHECK(unescaped(safe) == text);
    CHECK(unescaped(text).size() <= text.size());
    const Bytes bytes(text);
    CHECK(safe == printed([&](ORUDoStrbuf *buf) {
              oru_do_uri_escape_str_l(bytes.get(), bytes.size(), buf);
          }));
    CHECK(unescaped(text) == printed([&](ORUDoStrbuf *buf) {
              oru_do_uri_unescape_str_l(bytes.get(), bytes.size(), buf);
          }));
}

void try_texts(const std::string &text) {
    const Text block(text);
    const char *uri = block.get();
    const char *relative = oru_do_uri_get_relative_str(uri);
    CHECK(relative == nullptr || text.ends_with(relative));
    CHECK(oru_do_uri_str_is_absolute(uri) + oru_do_uri_str_is_infix(uri) < 2);
    CHECK((oru_do_uri_str_is_root(uri) == 1) == (text == "//"));
    const OwnText absolute(oru_do_uri_str_new_absolute(uri, "//l;i=1"));
    CHECK(oru_do_uri_str_is_infix(uri) == 1 && !text.empty()
              ? text == absolute.get()
              : oru_do_uri_str_is_absolute(absolute.get()) == 1);
    const Uri member(oru_do_uri_new_from_coll_uri_str(uri, nullptr));
    CHECK((member != nullptr) == (text.find('?') != std::string::npos));
    const Uri behind(oru_do_uri_new_relative(uri));
    CHECK((behind != nullptr) == (relative != nullptr));
    CHECK(behind == nullptr || text_of(behind) == relative);
}

void try_copies_of_text(const std::string &text) {
    const Bytes bytes(text);
    const Uri counted(oru_do_uri_new_l(bytes.get(), bytes.size()));
    const Uri formatted(oru_do_uri_new_fmt("%s", Text(text).get()));
    CHECK(text_of(counted) == text && text_of(formatted) == text);
    CHECK(oru_do_uri_is_root(counted.get()) == (text == "//"));
    CHECK(printed([&](ORUDoStrbuf *buf) { oru_do_uri_to_strbuf(counted.get(), 1, buf); }) ==
          "\t" + text);
}

// ---- Texts that break the grammar ----

// Too many segments and too long a name end the process when a URI is first read.
bool may_be_read(const std::string &text) {
    size_t length = 0;
    for (const char c : text) {
        length = c == '/' ? 0 : length + 1;
        if (length > 63)
            return false;
    }
    return std::count(text.begin(), text.end(), '/') < URI_MAX_SEGMENTS;
}

void try_bad(const std::string &text) {
    if (!may_be_read(text))
        return;
    const Uri uri(oru_do_uri_new(Text(text).get()));
    CHECK(oru_do_uri_get_segment_count(uri.get()) == 0);
    CHECK(oru_do_uri_get_keys(uri.get()) == nullptr);
    CHECK(oru_do_uri_get_key(uri.get(), 0) == nullptr);
    CHECK(oru_do_uri_get_query_part(uri.get()) == nullptr);
    CHECK(oru_do_uri_get_parent_uri(uri.get()) == nullptr);
    read(uri.get());
    CHECK(text_of(uri) == text);
    const Uri raw(oru_do_uri_new_parse_unescape_key(Text(text).get()));
    CHECK(raw == nullptr);
}

// ---- Comparing ----

std::string behind_location(const std::string &text, bool *is_there) {
    if (text.size() < 4 || !text.starts_with("//"))
        return text;
    const size_t slash = text.find('/', 2);
    *is_there = slash != std::string::npos;
    return *is_there ? text.substr(slash) : text;
}

void try_pair(const Uri &a, const Uri &b) {
    CHECK((oru_do_uri_equals(a.get(), b.get()) == 1) == (text_of(a) == text_of(b)));
    CHECK(oru_do_uri_equals(a.get(), b.get()) == oru_do_uri_equals(b.get(), a.get()));
    bool both = true;
    const std::string rest_a = behind_location(text_of(a), &both);
    bool other = true;
    const std::string rest_b = behind_location(text_of(b), &other);
    both = both && other;
    const int32_t relative = oru_do_uri_relative_equals(a.get(), b.get());
    CHECK((relative == 1) == (both && rest_a == rest_b));
    CHECK(relative == oru_do_uri_relative_equals(b.get(), a.get()));
}

void try_triple(const Uri (&uris)[3], int32_t (*equals)(ORUDoUri *, ORUDoUri *)) {
    const auto same = [&](int i, int j) { return equals(uris[i].get(), uris[j].get()) == 1; };
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3;
        const int k = (i + 2) % 3;
        CHECK(!same(i, j) || !same(j, k) || same(i, k));
    }
}

void try_comparing(const std::array<std::string, 3> &texts) {
    const Uri uris[3] = {Uri(oru_do_uri_new(texts[0].c_str())),
                         Uri(oru_do_uri_new(texts[1].c_str())),
                         Uri(oru_do_uri_new(texts[2].c_str()))};
    for (const Uri &a : uris) {
        for (const Uri &b : uris)
            try_pair(a, b);
    }
    try_triple(uris, oru_do_uri_equals);
    try_triple(uris, oru_do_uri_relative_equals);
}

void try_text(const std::string &text) {
    try_escaping(text);
    try_texts(text);
    try_copies_of_text(text);
    try_unparsed(text);
    const Uri good(oru_do_uri_validate_new(Text(text).get()));
    if (good)
        try_good(text);
    else
        try_bad(text);
}

void try_lines(std::array<std::string, 3> lines) {
    for (std::string &line : lines) {
        line = until_zero(line);
        try_text(line);
    }
    try_comparing(lines);
    try_builders(lines[0], lines[1]);
    try_builders(lines[1], lines[2]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const uint64_t blocks = poolheap_live_blocks();
    try_lines(lines_of<3>(data, size));
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
