#include <cctype>
#include <cfloat>
#include <cmath>

#include "tests/fuzz/value_fuzz.h"

namespace fuzz {

namespace {

std::string typedef_of(ORUDoValue *value) {
    const char *name = oru_do_value_get_typedef_name(value);
    return name != nullptr ? name : "";
}

bool is_secret(ORUDoValue *value) {
    const std::string name = typedef_of(value);
    return oru_do_value_get_type(value) == 8 &&
           (name.starts_with("PasswordString") || name.starts_with("EncryptedString"));
}

std::string hex(const std::string &bytes) {
    return printed([&](ORUDoStrbuf *buf) {
        oru_do_strbuf_add_hexbuf(buf, bytes.data(), static_cast<int32_t>(bytes.size()));
    });
}

// ---- Text ----

void check_lower_case(ORUDoValue *value, const std::string &text) {
    const std::string name = typedef_of(value);
    std::string expected = text;
    if (oru_do_value_get_type(value) == 15 && (name == "MACAddress" || name == "PhysAddress")) {
        for (char &c : expected)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    CHECK(expected == printed([&](ORUDoStrbuf *buf) {
              oru_do_value_to_strbuf_fmt(value, 0, &lower_case_mac_addr_formatter, buf);
          }));
}

void check_text(ORUDoValue *value, const std::string &text) {
    CHECK(text + (oru_do_value_is_default(value) != 0 ? " (default)" : "") ==
          printed([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf_with_defaults(value, 0, buf); }));
    CHECK(text == printed([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf_opt(value, 0, buf, 0); }));
    CHECK((is_secret(value) ? "<removed>" : text) == printed([&](ORUDoStrbuf *buf) {
              oru_do_value_to_strbuf_opt(value, 0, buf, ORU_DO_OPT_HIDE_SECRETS);
          }));
    CHECK(printed([&](ORUDoStrbuf *buf) {
              oru_do_value_to_strbuf(value, 2, buf);
          }).starts_with("\t\t"));
    CHECK(oru_do_value_equals_str(value, Text(text).get()) != 0);
    CHECK(oru_do_value_equals_str(value, Text(text + "x").get()) == 0);
    check_lower_case(value, text);
}

// ---- XML ----

std::string xml_escaped(const std::string &text) {
    return printed(
        [&](ORUDoStrbuf *buf) { oru_do_strbuf_add_string_encode_for_xml(buf, Text(text).get()); });
}

std::string attributes(ORUDoValue *value) {
    const int32_t type = oru_do_value_get_type(value);
    std::string text = " type=\"" + std::string(oru_do_get_typestr_by_typecode(type)) + '"';
    if (oru_do_value_get_typedef_name(value) != nullptr)
        text += " typedef=\"" + xml_escaped(typedef_of(value)) + '"';
    return type == -1 ? text + " xsi:null=\"true\"" : text;
}

std::string xml_content(ORUDoValue *value, const std::string &text, uint32_t opts) {
    const int32_t type = oru_do_value_get_type(value);
    int32_t rc = 0;
    if (type < 0)
        return "";
    if (type == 6 || type == 7 || type == 12 || type == 13)
        return std::to_string(oru_do_value_to_long(value, &rc));
    if (type == 15 || type == 102)
        return hex(bytes_of(value));
    if (type == 103)
        return "<p:" + text + "/>";
    const bool hidden = is_secret(value) && (opts & ORU_DO_OPT_HIDE_SECRETS) != 0;
    return xml_escaped(hidden ? "<removed>" : text);
}

void check_xml(ORUDoValue *value, const std::string &text) {
    for (const uint32_t opts : {0u, 1u, 2u, 3u}) {
        const std::string xml = printed(
            [&](ORUDoStrbuf *buf) { oru_do_value_to_xml_opt("p:", "n", value, buf, opts); });
        const std::string start =
            "<p:n" + ((opts & ORU_DO_OPT_PLAIN_XML) != 0 ? "" : attributes(value)) + ">";
        const std::string end = "</p:n>";
        CHECK(xml.starts_with(start) && xml.ends_with(end));
        CHECK(xml.size() >= start.size() + end.size());
        const int32_t type = oru_do_value_get_type(value);
        if (type < 104 || type == 107 || type == 108)
            CHECK(xml == start + xml_content(value, text, opts) + end);
    }
}

// ---- The ways back ----

bool is_plain_real(double x, double smallest) {
    return x == 0 || std::fabs(x) > 2 * smallest;
}

// An address as it prints parses unless it has a prefix that its notation cannot tell, or both
// notations in one.
bool address_reads_back(ORUDoValue *value, const std::string &text) {
    const std::string bytes = bytes_of(value);
    if (bytes.empty() || (text.find(':') != text.npos && text.find('.') != text.npos))
        return false;
    const bool has_prefix = bytes.size() == 5 || bytes.size() == 17;
    return !has_prefix || static_cast<signed char>(bytes.back()) > 0;
}

bool reads_back(ORUDoValue *value, const std::string &text) {
    int32_t rc = 0;
    switch (oru_do_value_get_type(value)) {
        case 9: {
            const int32_t word = oru_do_value_get_boolean(value, &rc);
            return word == 0 || word == 1;
        }
        case 12:
            return typedef_of(value) != "timeStamp";
        case 15:
            return typedef_of(value) != "MACAddress" && typedef_of(value) != "PhysAddress";
        case 101:
            return oru_do_value_get_typedef_name(value) == nullptr &&
                   address_reads_back(value, text);
        case 102:
            return oru_do_value_get_length(value) >= 1 && oru_do_value_get_length(value) <= 20;
        default:
            return true;
    }
}

// Six digits are kept, so the text of a number is the text of what it parses to.
void check_real(ORUDoValue *value, const std::string &text) {
    int32_t rc = 0;
    const int32_t type = oru_do_value_get_type(value);
    if (is_plain_real(oru_do_value_to_double(value, &rc), type == 10 ? FLT_MIN : DBL_MIN))
        CHECK(text_of(parsed(type, text).get()) == text);
}

void check_way_back(ORUDoValue *value, const std::string &text) {
    const int32_t type = oru_do_value_get_type(value);
    if (type == 10 || type == 11) {
        check_real(value, text);
    } else if (type > -2 && (type < 104 || type == 107 || type == 108) && reads_back(value, text)) {
        const Value again = parsed(type, text);
        CHECK(again != nullptr && oru_do_value_equals(value, again.get()) != 0);
    }
}

// ---- Key text ----

bool key_reads_back(ORUDoValue *value) {
    const int32_t type = oru_do_value_get_type(value);
    int32_t rc = 0;
    if (type == 9)
        return (oru_do_value_get_boolean(value, &rc) & ~1) == 0;
    if (type == 101)
        return oru_do_value_get_length(value) > 0;
    if (type == 102)
        return oru_do_value_get_length(value) > 0 && oru_do_value_get_length(value) <= 20;
    return type > -2 && type != 10 && type != 11 && type != 104 && type != 105 && type != 106 &&
           type != 109;
}

void check_key(ORUDoValue *value, const std::string &text) {
    const int32_t type = oru_do_value_get_type(value);
    const std::string key = key_text(value);
    CHECK(key.find_first_of("/?;= ") == std::string::npos);
    const std::string raw = unescaped(key);
    if (type == 15 || type == 101 || type == 102)
        CHECK(raw == hex(bytes_of(value)));
    else if (type != 12)
        CHECK(raw == text);
    if (key_reads_back(value)) {
        const Value again = parsed(type, raw);
        CHECK(again != nullptr && oru_do_value_equals(value, again.get()) != 0);
    }
}

// ---- Formatters ----

int32_t print_context(intptr_t context, ORUDoValue *, int32_t tabs, ORUDoStrbuf *strbuf) {
    oru_do_strbuf_add_long(strbuf, context + tabs);
    return 5;
}

int32_t xml_context(intptr_t context, const char *prefix, const char *name, ORUDoValue *,
                    ORUDoStrbuf *strbuf, uint32_t opts) {
    oru_do_strbuf_add_string(strbuf, prefix);
    oru_do_strbuf_add_string(strbuf, name);
    oru_do_strbuf_add_long(strbuf, context + opts);
    return 6;
}

void check_formatter(ORUDoValue *value) {
    const ORUDoValueFormatter formatter = {40, print_context, nullptr, xml_context};
    oru_do_value_set_default_formatter(&formatter);
    CHECK(printed([&](ORUDoStrbuf *buf) { CHECK(oru_do_value_to_strbuf(value, 2, buf) == 5); }) ==
          "42");
    CHECK(printed([&](ORUDoStrbuf *buf) {
              CHECK(oru_do_value_to_xml_opt("p", "n", value, buf, 3) == 6);
          }) == "pn43");
    oru_do_value_set_default_formatter(nullptr);
    CHECK(printed([&](ORUDoStrbuf *buf) {
              CHECK(oru_do_value_to_xml_fmt_opt("p", "n", value, &formatter, buf, 3) == 6);
          }) == "pn43");
    // One that is given and has no operation leaves the built-in one.
    const ORUDoValueFormatter none = {0, nullptr, nullptr, nullptr};
    CHECK(printed([&](ORUDoStrbuf *buf) { oru_do_value_to_strbuf_fmt(value, 0, &none, buf); }) ==
          text_of(value));
}

}  // namespace

std::string text_of(ORUDoValue *value) {
    return printed([&](ORUDoStrbuf *buf) { CHECK(oru_do_value_to_strbuf(value, 0, buf) == 0); });
}

std::string bytes_of(ORUDoValue *value) {
    int32_t rc = 0;
    int32_t size = 0;
    const uint8_t *bytes = nullptr;
    if (oru_do_value_get_type(value) == 15)
        bytes = oru_do_value_get_hex_binary(value, &size, &rc);
    else if (oru_do_value_get_type(value) == 101)
        bytes = oru_do_value_get_ip_address(value, &size, &rc);
    else
        bytes = oru_do_value_get_nsap_address(value, &size, &rc);
    CHECK(rc == 0 && size == oru_do_value_get_length(value));
    return std::string(reinterpret_cast<const char *>(bytes), static_cast<size_t>(size));
}

void check_forms(ORUDoValue *value) {
    const std::string text = text_of(value);
    check_text(value, text);
    check_xml(value, text);
    check_way_back(value, text);
    check_key(value, text);
    check_formatter(value);
}

}  // namespace fuzz
