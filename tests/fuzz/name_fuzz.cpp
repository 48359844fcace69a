// Names from any text: three lines are names, of which the second also serves as a package and the
// third as a version. All are made, compared, qualified and taken apart again; and the text goes
// through every way of appending to a buffer.
#include <oruplatform/poolheap.h>

#include <utility>

#include "tests/fuzz/fuzz.h"

namespace {

using namespace fuzz;

std::string text_of(const Name &name) {
    return oru_do_name_get_strname(name.get());
}

Name made(const std::string &text) {
    return Name(oru_do_name_new(Text(text).get()));
}

bool has(const std::string &text, char c) {
    return text.find(c) != std::string::npos;
}

// ---- Making and comparing ----

void try_making(const std::string &raw) {
    const Bytes bytes(raw);
    const Name counted(oru_do_name_new_l(bytes.get(), bytes.size()));
    CHECK(text_of(counted) == until_zero(raw));
    const Name name = made(until_zero(raw));
    CHECK(oru_do_name_equals(name.get(), counted.get()) != 0);
    CHECK(oru_do_name_new_l(bytes.get(), -1) == nullptr);
    for (int32_t n = 0; n <= bytes.size() && n < 40; ++n) {
        const Name start(oru_do_name_new_l(bytes.get(), n));
        CHECK(text_of(start) == until_zero(raw.substr(0, static_cast<size_t>(n))));
    }
}

void try_text_compare(const std::string &a, const std::string &b) {
    const Name name = made(a);
    const Bytes bytes(b);
    const int32_t n = bytes.size();
    CHECK((oru_do_name_equals_w_strname(name.get(), Text(b).get()) != 0) == (a == b));
    CHECK((oru_do_name_equals_w_strname_l(name.get(), bytes.get(), n) != 0) == a.starts_with(b));
    CHECK((oru_do_name_equals_w_strname_l_strict(name.get(), bytes.get(), n) != 0) == (a == b));
    CHECK(oru_do_name_equals_w_strname(name.get(), nullptr) == 0);
}

void try_equality(const std::string &a, const std::string &b, const std::string &c) {
    const Name names[] = {made(a), made(b), made(c)};
    bool equal[3][3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            equal[i][j] = oru_do_name_equals(names[i].get(), names[j].get()) != 0;
    }
    for (int i = 0; i < 3; ++i) {
        CHECK(equal[i][i] && oru_do_name_equals(names[i].get(), nullptr) == 0);
        for (int j = 0; j < 3; ++j) {
            CHECK(equal[i][j] == equal[j][i]);
            for (int k = 0; k < 3; ++k)
                CHECK(!equal[i][j] || !equal[j][k] || equal[i][k]);
        }
    }
    CHECK(equal[0][1] == (a == b));
}

// ---- Qualified names ----

void try_unqualified(const std::string &text) {
    const Name name = made(text);
    const size_t slash = text.find('/');
    const size_t dot = slash == std::string::npos ? slash : text.find('.', slash);
    CHECK((oru_do_name_is_fully_qualified(name.get()) != 0) == has(text, '/'));
    CHECK((is_fully_qualified_name(Text(text).get()) != 0) == has(text, '/'));
    const char *part = oru_do_name_get_unqualified_strname(name.get());
    const Name short_name(oru_do_name_new_or_ref_unqualified_name(name.get()));
    if (slash == std::string::npos) {
        CHECK(part == oru_do_name_get_strname(name.get()) && short_name.get() == name.get());
    } else if (dot == std::string::npos) {
        CHECK(part == nullptr && short_name == nullptr);
    } else {
        CHECK(text.substr(dot + 1) == part && text_of(short_name) == part);
    }
}

struct Parts {
    char *package;
    char *version;
    char *entity;
    char *attribute;
};

Parts split(const Text &text) {
    Parts parts;
    CHECK(parse_pkg_and_ent_name(text.get(), &parts.package, &parts.version, &parts.entity,
                                 &parts.attribute) == 0);
    const char *end = text.get() + text.size();
    for (const char *part : {parts.package, parts.version, parts.entity, parts.attribute})
        CHECK(part == nullptr || (part >= text.get() && part < end));
    return parts;
}

bool is(const char *part, const std::string &text) {
    return part != nullptr && part == text;
}

// The parts and what stood between them are the whole text.
void try_splitting(const std::string &text) {
    const Text block(text);
    const Parts parts = split(block);
    std::string whole;
    if (parts.package != nullptr)
        whole += parts.package;
    if (parts.version != nullptr)
        whole += std::string(":") + parts.version;
    if (parts.package != nullptr)
        whole += has(text, '/') ? '/' : '.';
    if (parts.entity != nullptr)
        whole += parts.entity;
    if (parts.attribute != nullptr)
        whole += std::string(".") + parts.attribute;
    CHECK(whole == text);
    CHECK((parts.package == nullptr) == (!has(text, '/') && !has(text, '.')));
    CHECK(parts.version == nullptr || !has(parts.version, ':'));
    CHECK(parts.attribute == nullptr || !has(parts.entity, '.'));
}

void check_parts(const std::string &text, const std::string &name, const std::string &package,
                 const char *version) {
    const Text block(text);
    const Parts parts = split(block);
    if (version != nullptr ? !has(version, ':') && !has(version, '/') : !has(package, ':')) {
        CHECK(is(parts.package, package));
        CHECK(version != nullptr ? is(parts.version, version) : parts.version == nullptr);
    }
    const size_t dot = name.find('.');
    CHECK(name.empty() ? parts.entity == nullptr : is(parts.entity, name.substr(0, dot)));
    CHECK(dot == std::string::npos ? parts.attribute == nullptr
                                   : is(parts.attribute, name.substr(dot + 1)));
}

void try_qualifying(const std::string &text, const std::string &package, const char *version) {
    const Name name = made(text);
    const Text package_text(package);
    const Name full(oru_do_name_new_fqname(name.get(), package_text.get(), version));
    const Name same(oru_do_name_new_fqname(name.get(), nullptr, version));
    CHECK(same.get() == name.get());
    if (has(text, '/')) {
        CHECK(full.get() == name.get());
        return;
    }
    const std::string expected =
        package + (version != nullptr ? ":" + std::string(version) : "") + "/" + text;
    CHECK(text_of(full) == expected);
    CHECK(oru_do_name_is_fully_qualified(full.get()) != 0);
    check_parts(expected, text, package, version);
}

// ---- Buffers ----

std::string replaced(std::string text, const std::string &from, const std::string &to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

void try_text_forms(const std::string &text, const std::string &excluded) {
    const Text block(text);
    const Bytes bytes(text);
    CHECK(text == printed([&](ORUDoStrbuf *buf) { oru_do_strbuf_add_string(buf, block.get()); }));
    CHECK(text == printed([&](ORUDoStrbuf *buf) {
              oru_do_strbuf_add_string_l(buf, bytes.get(), bytes.size());
          }));
    const std::string rest = printed([&](ORUDoStrbuf *buf) {
        oru_do_strbuf_add_string_l_excl(buf, bytes.get(), bytes.size(), Text(excluded).get());
    });
    CHECK(excluded.empty() ? rest == text : rest.find_first_of(excluded) == std::string::npos);
    CHECK("_" + replaced(text, ".", "_") == printed([&](ORUDoStrbuf *buf) {
              oru_do_strbuf_add_string_encode_for_sql(buf, block.get());
          }));
    const std::string xml = printed(
        [&](ORUDoStrbuf *buf) { oru_do_strbuf_add_string_encode_for_xml(buf, block.get()); });
    CHECK(xml.find_first_of("<>'\"") == std::string::npos);
    std::string back = xml;
    for (const auto &[escape, c] :
         {std::pair{"&quot;", "\""}, {"&apos;", "'"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&amp;", "&"}})
        back = replaced(back, escape, c);
    CHECK(back == text);
}

void try_footer(const std::string &text, const std::string &footer) {
    const Buffer buf(oru_do_strbuf_new());
    oru_do_strbuf_add_string(buf.get(), text.c_str());
    oru_do_strbuf_add_string(buf.get(), footer.c_str());
    CHECK(oru_do_strbuf_remove_ftr(buf.get(), Text(footer).get()) ==
          static_cast<int32_t>(text.size()));
    CHECK(text == oru_do_strbuf_to_string(buf.get()));
}

void try_hex_forms(const std::string &raw, const std::string &separator) {
    const Bytes bytes(raw);
    const std::string plain = printed(
        [&](ORUDoStrbuf *buf) { oru_do_strbuf_add_hexbuf(buf, bytes.get(), bytes.size()); });
    CHECK(plain.size() == 2 * raw.size());
    for (int32_t group = 0; group < 4; ++group) {
        const std::string upper = printed([&](ORUDoStrbuf *buf) {
            oru_do_strbuf_add_hexbuf_sep(buf, bytes.get(), bytes.size(), Text(separator).get(),
                                         group);
        });
        const size_t gaps =
            group == 0 || raw.empty() ? 0 : (raw.size() - 1) / static_cast<size_t>(group);
        CHECK(upper.size() == plain.size() + gaps * separator.size());
        const std::string lower = printed([&](ORUDoStrbuf *buf) {
            oru_do_strbuf_add_hexbuf_sep_l(buf, bytes.get(), bytes.size(), nullptr, group);
        });
        CHECK(lower.size() == plain.size());
    }
}

void try_lines(const std::array<std::string, 3> &lines) {
    const std::string a = until_zero(lines[0]);
    const std::string b = until_zero(lines[1]);
    const std::string c = until_zero(lines[2]);
    for (const std::string &line : lines) {
        try_making(line);
        try_unqualified(until_zero(line));
        try_splitting(until_zero(line));
    }
    try_text_compare(a, b);
    try_equality(a, b, c);
    try_qualifying(a, b, nullptr);
    try_qualifying(a, b, Text(c).get());
    try_text_forms(a, b);
    try_footer(a, b);
    try_hex_forms(lines[0], b);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const uint64_t blocks = poolheap_live_blocks();
    try_lines(lines_of<3>(data, size));
    CHECK(poolheap_live_blocks() == blocks);
    return 0;
}
