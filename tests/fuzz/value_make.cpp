// The ways to make a value.
#include <cmath>

#include "oru/md_lookup.h"
#include "tests/fuzz/value_fuzz.h"

namespace fuzz {

namespace {

bool is_one_of(int32_t rc, std::initializer_list<int32_t> codes) {
    for (const int32_t code : codes) {
        if (rc == code)
            return true;
    }
    return false;
}

bool same(const Value &a, const Value &b) {
    return (a == nullptr) == (b == nullptr) &&
           (a == nullptr || oru_do_value_equals(a.get(), b.get()) != 0);
}

bool is_real(int32_t type) {
    return type == 10 || type == 11;
}

bool is_whole_number(int32_t type) {
    return is_integer(type) || type == 12 || type == 13;
}

bool has_no_text(int32_t type) {
    return type < -3 || type == -2 || (type > 15 && type < 101) || (type > 103 && type < 107) ||
           type > 109;
}

// A status from outside stops integers, and only them.
void try_with_status(const Sample &sample) {
    int32_t rc = 101;
    const Value value(oru_do_value_new_from_string(Text(sample.text).get(), sample.type, &rc));
    CHECK(!is_whole_number(sample.type) || (value == nullptr && rc == 101));
    int32_t clear = 0;
    const Value again(oru_do_value_new_from_string(Text(sample.text).get(), sample.type, &clear));
    CHECK(is_whole_number(sample.type) || same(value, again));
}

void try_conversion(const Sample &sample) {
    const Value text(oru_do_value_new_string(sample.text.c_str()));
    int32_t rc = 7;
    int32_t direct = 0;
    const Value value(oru_do_value_new_from_conversion(text.get(), sample.type, &rc));
    const Value other(oru_do_value_new_from_string(Text(sample.text).get(), sample.type, &direct));
    CHECK(rc == direct && same(value, other));
    if (other && oru_do_value_get_type(other.get()) != 8) {
        const Value none(oru_do_value_new_from_conversion(other.get(), sample.type, &rc));
        CHECK(none == nullptr && rc == 101);
    }
}

std::string attribute_of(int32_t type) {
    return "of" + std::to_string(type);
}

void try_description(const Sample &sample, ORUDoMrMeta *meta) {
    const Value text(oru_do_value_new_string(sample.text.c_str()));
    int32_t rc = 7;
    int32_t direct = 0;
    const Value value(
        oru_do_value_new_from_mr_meta(text.get(), meta, attribute_of(sample.type).c_str(), &rc));
    const Value other(oru_do_value_new_from_string(Text(sample.text).get(), sample.type, &direct));
    CHECK(rc == direct && same(value, other));
    const Value none(oru_do_value_new_from_mr_meta(text.get(), meta, "none", &rc));
    CHECK(none == nullptr && rc == 0);
}

// In the range that every width of 32 bits and more holds, a number and its digits are one value.
void try_number(double x) {
    for (const int32_t type : kTypes) {
        int32_t rc = 0;
        const Value value(oru_do_value_new_from_number(type, &rc, x));
        const bool numeric = oru_do_is_numeric_type(type) != 0;
        CHECK((value != nullptr) == numeric && rc == (numeric ? 0 : 110));
        if (is_whole_number(type) && std::fabs(x) < INT32_MAX)
            CHECK(same(value, parsed(type, std::to_string(static_cast<int64_t>(x)))));
        if (type == 9)
            CHECK(oru_do_value_get_boolean(value.get(), &rc) == !(std::fabs(x) > 1e-5));
        if (type == 11)
            CHECK(std::isnan(x) || oru_do_value_get_double(value.get(), &rc) == x);
    }
}

void try_numbers(const std::string &text) {
    try_number(std::strtod(text.c_str(), nullptr));
    double x = 0;
    text.copy(reinterpret_cast<char *>(&x), sizeof x);
    try_number(x);
}

// A formatter that parses has the last word.
ORUDoValue *parse_as_text(intptr_t context, const char *text, int32_t, int32_t *errp) {
    *errp = static_cast<int32_t>(context);
    return oru_do_value_new_string(text);
}

void try_formatter(const Sample &sample) {
    const ORUDoValueFormatter formatter = {11, nullptr, parse_as_text, nullptr};
    oru_do_value_set_default_formatter(&formatter);
    int32_t rc = 0;
    const Value value(oru_do_value_new_from_string(Text(sample.text).get(), sample.type, &rc));
    oru_do_value_set_default_formatter(nullptr);
    CHECK(rc == 11 && sample.text == oru_do_value_get_string(value.get(), &rc));
    const Value given(
        oru_do_value_new_from_string_fmt(Text(sample.text).get(), sample.type, &formatter, &rc));
    CHECK(rc == 11 && same(value, given));
}

void try_type_names(const Sample &sample) {
    const char *name = oru_do_get_typestr_by_typecode(sample.type);
    if (sample.type >= 0 && name != nullptr && std::strcmp(name, "__unknown__") != 0)
        CHECK(oru_do_get_typecode_by_typestr(name) == sample.type);
    const int32_t code = oru_do_get_typecode_by_typestr(Text(sample.text).get());
    CHECK(code == -3 || sample.text == oru_do_get_typestr_by_typecode(code));
}

}  // namespace

Value parsed(int32_t type, const std::string &text) {
    int32_t rc = 0;
    Value value(oru_do_value_new_from_string(Text(text).get(), type, &rc));
    CHECK(is_one_of(rc, {0, 101, 110, 10000}));
    CHECK(has_no_text(type) == (rc == 110 && type != 9));
    // What is no number still makes a float and a double.
    CHECK((value != nullptr) == (rc == 0 || is_real(type)));
    CHECK(value == nullptr || oru_do_value_get_type(value.get()) == (type == -3 ? 8 : type));
    return value;
}

Value made(const Sample &sample, const std::string &raw) {
    const Bytes bytes(raw);
    double x = 0;
    raw.copy(reinterpret_cast<char *>(&x), sizeof x);
    switch (sample.type) {
        case -2:
            return Value(oru_do_value_new_default());
        case 8:
            return Value(oru_do_value_new_string_l(bytes.get(), bytes.size()));
        case 9:
            return Value(oru_do_value_new_boolean(bytes.size()));
        case 10:
            return Value(oru_do_value_new_float(static_cast<float>(x)));
        case 11:
            return Value(oru_do_value_new_double(x));
        case 15:
            return Value(oru_do_value_new_hex_binary(bytes.get(), bytes.size()));
        case 101:
            return Value(oru_do_value_new_ip_address(bytes.get(), bytes.size()));
        case 102:
            return Value(oru_do_value_new_nsap_address(bytes.get(), bytes.size()));
        case 103:
            return Value(oru_do_value_new_enumeration_l(bytes.get(), bytes.size()));
        default:
            return nullptr;
    }
}

MrMeta described_types() {
    const Name name(oru_do_name_new("r"));
    MrMeta meta(
        oru_do_mr_meta_new(name.get(), nullptr, name.get(), ORU_ACCESS_READ, nullptr, nullptr));
    for (const int32_t type : kTypes) {
        const Name attribute(oru_do_name_new(attribute_of(type).c_str()));
        const PropMeta prop(oru_do_prop_meta_new(attribute.get(), ORU_PROP_CONFIG, 0, 0, nullptr,
                                                 type, name.get(), ORU_MULTIPLICITY_ONE,
                                                 ORU_REF_NONE, ORU_ACCESS_READ, 0));
        oru_do_mr_meta_add_prop_meta(meta.get(), prop.get());
    }
    return meta;
}

void check_prefix(const Sample &sample, const Value &value) {
    const size_t start = sample.text.find_first_not_of('/');
    const size_t slash = sample.text.find('/', start);
    const size_t prefix = sample.text.find_first_not_of('/', slash);
    if (sample.type != 101 || value == nullptr ||
        sample.text.substr(start, slash - start).find_first_of(".:") == std::string::npos)
        return;
    const std::string bytes = bytes_of(value.get());
    CHECK((bytes.size() == 5 || bytes.size() == 17) == (prefix < sample.text.size()));
    if (prefix < sample.text.size())
        CHECK(std::strtol(sample.text.c_str() + prefix, nullptr, 10) ==
              static_cast<uint8_t>(bytes.back()));
}

void try_making(const Sample &sample, ORUDoMrMeta *meta) {
    try_type_names(sample);
    try_with_status(sample);
    try_conversion(sample);
    try_description(sample, meta);
    try_numbers(sample.text);
    try_formatter(sample);
}

}  // namespace fuzz
