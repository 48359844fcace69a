// Equality and ordering of values.
#include <cmath>

#include "do/strbuf.h"
#include "do/value.h"
#include "oru/nvlist.h"
#include "oru/vlist.h"

namespace {

using oru::number_of;

enum : int32_t { kLess = -1, kSame = 0, kGreater = 1, kNotComparable = -2 };

template <class Number>
int32_t order(Number a, Number b) {
    if (a == b)
        return kSame;
    return a < b ? kLess : kGreater;
}

// The test is that the difference is not above the bound: one that is no number passes.
template <class Number>
bool nearly_same(const ORUDoValue &a, const ORUDoValue &b) {
    const Number difference = std::fabs(number_of<Number>(a) - number_of<Number>(b));
    return !(static_cast<double>(difference) > oru::kSameNumber);
}

template <class Number>
bool same_number(const ORUDoValue &a, const ORUDoValue &b) {
    return number_of<Number>(a) == number_of<Number>(b);
}

// What stands behind a zero does not count, the length does.
bool same_text(const ORUDoValue &a, const ORUDoValue &b) {
    const auto text_a = oru::sized_payload(a);
    const auto text_b = oru::sized_payload(b);
    return text_a.size() == text_b.size() &&
           std::strncmp(text_a.data(), text_b.data(), text_a.size()) == 0;
}

bool same_payload(const ORUDoValue &a, const ORUDoValue &b) {
    switch (a.type) {
        case ORU_DO_TYPE_UNKNOWN:
        case ORU_DO_TYPE_DEFAULT:
        case ORU_DO_TYPE_NULL:
            return true;
        case ORU_DO_TYPE_UNSIGNED_BYTE:
        case ORU_DO_TYPE_BYTE:
            return same_number<uint8_t>(a, b);
        case ORU_DO_TYPE_UNSIGNED_SHORT:
        case ORU_DO_TYPE_SHORT:
            return same_number<uint16_t>(a, b);
        case ORU_DO_TYPE_UNSIGNED_INT:
        case ORU_DO_TYPE_INT:
        case ORU_DO_TYPE_BOOLEAN:
            return same_number<uint32_t>(a, b);
        case ORU_DO_TYPE_UNSIGNED_LONG:
        case ORU_DO_TYPE_LONG:
        case ORU_DO_TYPE_DATETIME:
        case ORU_DO_TYPE_DURATION:
            return same_number<uint64_t>(a, b);
        case ORU_DO_TYPE_FLOAT:
            return nearly_same<float>(a, b);
        case ORU_DO_TYPE_DOUBLE:
            return nearly_same<double>(a, b);
        case ORU_DO_TYPE_STRING:
        case ORU_DO_TYPE_ENUMERATION:
            return same_text(a, b);
        case ORU_DO_TYPE_HEX_BINARY:
        case ORU_DO_TYPE_IP_ADDRESS:
        case ORU_DO_TYPE_NSAP_ADDRESS:
            return oru::sized_payload(a) == oru::sized_payload(b);
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return oru_do_uri_equals(a.data.uri, b.data.uri) != 0;
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
            return oru_do_nvlist_equals(a.data.nvlist, b.data.nvlist) != 0;
        case ORU_DO_TYPE_ARRAY:
        case ORU_DO_TYPE_BITS:
            return oru_do_vlist_equals(a.data.vlist, b.data.vlist) != 0;
        default:
            return false;
    }
}

bool same_value(const ORUDoValue &a, const ORUDoValue &b) {
    return &a == &b || (a.type == b.type && same_payload(a, b));
}

// What was printed counts, whatever a formatter gives as its result.
bool equals_printed(ORUDoValue *val, const char *text) {
    const auto buf = oru::Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf)
        return false;
    oru_do_value_to_strbuf(val, 0, buf.get());
    if (oru_do_strbuf_get_err(buf.get()) != 0)
        return false;
    return std::strcmp(oru_do_strbuf_to_string(buf.get()), text) == 0;
}

bool equals_text(const char *held, const char *text) {
    return held != nullptr && std::strcmp(held, text) == 0;
}

// Whole numbers, each told by its value: `a` and `b` are of signed or unsigned integer types.
int32_t order_integers(const ORUDoValue &a, const ORUDoValue &b) {
    const int64_t x = oru::integer_of(a);
    const int64_t y = oru::integer_of(b);
    const bool unsigned_a = oru_do_is_unsigned_int_num_type(a.type) != 0;
    const bool unsigned_b = oru_do_is_unsigned_int_num_type(b.type) != 0;
    if (unsigned_a && unsigned_b)
        return order(static_cast<uint64_t>(x), static_cast<uint64_t>(y));
    // An unsigned number with its top bit set is above all signed ones.
    if (unsigned_a && x < 0)
        return kGreater;
    if (unsigned_b && y < 0)
        return kLess;
    return order(x, y);
}

// A float and a double are never the same, since equality wants one type.
int32_t order_reals(const ORUDoValue &a, const ORUDoValue &b) {
    if (same_value(a, b))
        return kSame;
    return oru::real_of(b) > oru::real_of(a) ? kLess : kGreater;
}

int32_t order_booleans(const ORUDoValue &a, const ORUDoValue &b) {
    if (b.type != ORU_DO_TYPE_BOOLEAN)
        return kNotComparable;
    return order(number_of<uint32_t>(a), number_of<uint32_t>(b));
}

// Shorter payloads come first whatever they hold. `b` may be of any type, without sized storage.
int32_t order_sized(const ORUDoValue &a, const ORUDoValue &b, bool strict) {
    if (a.type != b.type) {
        const bool with_string = a.type == ORU_DO_TYPE_STRING || b.type == ORU_DO_TYPE_STRING;
        if (strict || !with_string)
            return kNotComparable;
    }
    if (!oru::is_sized_type(b.type))
        return kGreater;
    const auto bytes_a = oru::sized_payload(a);
    const auto bytes_b = oru::sized_payload(b);
    if (bytes_a.size() != bytes_b.size())
        return order(bytes_a.size(), bytes_b.size());
    return order(std::memcmp(bytes_a.data(), bytes_b.data(), bytes_a.size()), 0);
}

// This compares the records, not the texts of the URIs: only the same held record gives 0, and any
// other sign depends on memory. Sorted stores rely on nothing more.
int32_t order_uris(const ORUDoValue &a, const ORUDoValue &b) {
    if (oru_do_is_uri_type(b.type) == 0)
        return kNotComparable;
    if (oru::uri_text(a) == nullptr || oru::uri_text(b) == nullptr)
        return kNotComparable;
    return std::strncmp(reinterpret_cast<const char *>(a.data.uri),
                        reinterpret_cast<const char *>(b.data.uri), static_cast<size_t>(a.len));
}

// Those that are not equal go by their count of entries; a count that is the same is no answer.
int32_t order_by_count(const ORUDoValue &a, const ORUDoValue &b, int32_t count_a, int32_t count_b) {
    if (same_value(a, b))
        return kSame;
    return count_a < count_b ? kLess : kGreater;
}

int32_t order_complex(const ORUDoValue &a, const ORUDoValue &b) {
    if (oru_do_is_complex_type(b.type) == 0)
        return kNotComparable;
    return order_by_count(a, b, oru_do_nvlist_get_len(a.data.nvlist),
                          oru_do_nvlist_get_len(b.data.nvlist));
}

bool holds_values(int32_t type) {
    return oru_do_is_array_type(type) != 0 || oru_do_is_bits_type(type) != 0;
}

int32_t order_arrays(const ORUDoValue &a, const ORUDoValue &b) {
    if (!holds_values(b.type))
        return kNotComparable;
    return order_by_count(a, b, oru_do_vlist_get_len(a.data.vlist),
                          oru_do_vlist_get_len(b.data.vlist));
}

}  // namespace

int32_t oru::order_values(const ORUDoValue &a, const ORUDoValue &b, bool strict) {
    if (is_integer_type(a.type) != is_integer_type(b.type))
        return kNotComparable;
    if (oru_do_is_float_num_type(a.type) != oru_do_is_float_num_type(b.type))
        return kNotComparable;
    if (is_whole_number_type(a.type) && is_whole_number_type(b.type))
        return order_integers(a, b);
    if (oru_do_is_float_num_type(a.type) != 0)
        return order_reals(a, b);
    if (a.type == ORU_DO_TYPE_BOOLEAN)
        return order_booleans(a, b);
    if (is_sized_type(a.type))
        return order_sized(a, b, strict);
    if (oru_do_is_complex_type(a.type) != 0)
        return order_complex(a, b);
    if (holds_values(a.type))
        return order_arrays(a, b);
    if (oru_do_is_uri_type(a.type) != 0)
        return order_uris(a, b);
    return kNotComparable;
}

int32_t oru_do_value_equals(ORUDoValue *val1, ORUDoValue *val2) {
    ORU_REQUIRE(val1);
    ORU_REQUIRE(val2);
    return same_value(*val1, *val2);
}

int32_t oru_do_value_equals_str(ORUDoValue *val1, const char *text) {
    ORU_REQUIRE(val1);
    ORU_REQUIRE_AS(text, "val2");
    switch (val1->type) {
        case ORU_DO_TYPE_STRING:
        case ORU_DO_TYPE_ENUMERATION:
            return equals_text(val1->data.bytes, text);
        case ORU_DO_TYPE_BOOLEAN:
            return equals_text(oru::boolean_text(*val1), text);
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return equals_text(oru::uri_text(*val1), text);
        default:
            return equals_printed(val1, text);
    }
}

int32_t oru_do_value_compare(ORUDoValue *val1, ORUDoValue *val2) {
    ORU_REQUIRE(val1);
    ORU_REQUIRE(val2);
    return oru::order_values(*val1, *val2, true);
}

int32_t oru_do_value_compare_nostrict(ORUDoValue *val1, ORUDoValue *val2) {
    ORU_REQUIRE(val1);
    ORU_REQUIRE(val2);
    return oru::order_values(*val1, *val2, false);
}
