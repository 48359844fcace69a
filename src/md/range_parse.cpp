// Ranges from texts and tokens.
#include <arpa/inet.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "do/value.h"
#include "frame/text.h"
#include "md/range.h"
#include "oru/error.h"
#include "oru/json.h"
#include "oru/rc.h"
#include "oru/util.h"

namespace {

using oru::Ref;
using oru::Text;

bool is_address(int family, const char *text) {
    unsigned char bytes[sizeof(in6_addr)];
    return inet_pton(family, text, bytes) == 1;
}

// Negative integers and numbers close to 0 come out as strings, which metadata relies on: it gives
// its ranges their types.
int32_t infer_type(const char *text) {
    if (oru_util_is_int_str(text) != 0)
        return ORU_DO_TYPE_LONG;
    if (text[0] == '"')
        return ORU_DO_TYPE_STRING;
    if (std::strcmp(text, "0.0") == 0)
        return ORU_DO_TYPE_DOUBLE;
    if (std::strchr(text, '.') != nullptr) {
        if (is_address(AF_INET, text))
            return ORU_DO_TYPE_IP_ADDRESS;
        if (std::fabs(std::strtod(text, nullptr)) > 1e-5)
            return ORU_DO_TYPE_DOUBLE;
    }
    if (std::strchr(text, ':') != nullptr && is_address(AF_INET6, text))
        return ORU_DO_TYPE_IP_ADDRESS;
    if (std::strcmp(text, "false") == 0 || std::strcmp(text, "true") == 0)
        return ORU_DO_TYPE_BOOLEAN;
    return std::strcmp(text, "null") == 0 ? ORU_DO_TYPE_NULL : ORU_DO_TYPE_STRING;
}

Ref<ORUDoValue> value_from_json(const char *text, int32_t &code) {
    ORUDoError *error = nullptr;
    auto value = Ref<ORUDoValue>::adopt(
        oru_do_value_from_json(text, static_cast<int32_t>(std::strlen(text)), &error));
    if (error != nullptr)
        code = oru_do_error_get_code(error);
    oru_do_error_deref(error);
    return value;
}

Ref<ORUDoValue> value_from_text(const char *text, int32_t typecode, int32_t &code) {
    if (text[0] == '{')
        return value_from_json(text, code);
    const size_t length = std::strlen(text);
    if (typecode == ORU_DO_TYPE_STRING && length > 1 && text[0] == '"' && text[length - 1] == '"')
        return Ref<ORUDoValue>::adopt(
            oru_do_value_new_string_l(text + 1, static_cast<int32_t>(length - 2)));
    return Ref<ORUDoValue>::adopt(oru_do_value_new_from_string(text, typecode, &code));
}

// A text whose storage could not be had would read as an empty one, and let that in.
bool is_whole(const ORUDoValue &value) {
    return !oru::is_sized_type(value.type) || value.data.bytes != nullptr;
}

// One side of an element. A side without a text is neither open nor bounded.
struct Bound {
    Ref<ORUDoValue> value;
    bool open = false;
};

Bound read_bound(const char *text, int32_t typecode) {
    if (text == nullptr)
        return {};
    if (std::strcmp(text, "*") == 0)
        return {{}, true};
    int32_t code = ORU_OK;
    auto value = oru::value_from_constraint_text(text, typecode, code);
    const bool failed = code != ORU_OK || !value;
    return failed ? Bound{{}, true} : Bound{std::move(value)};
}

Bound read_lower(const char *text, int32_t typecode) {
    const bool below_zero =
        text != nullptr && text[0] == '-' && oru_do_is_unsigned_int_num_type(typecode) != 0;
    return read_bound(below_zero ? "0" : text, typecode);
}

int32_t add_bounds(ORUDoRange *range, const Bound &lower, const Bound &upper) {
    if (lower.value && upper.value)
        return oru_do_range_add_value(range, ORU_RANGE_BETWEEN, lower.value.get(),
                                      upper.value.get());
    if (upper.value)
        return oru_do_range_add_value(range, lower.open ? ORU_RANGE_AT_MOST : ORU_RANGE_EQUAL,
                                      upper.value.get(), nullptr);
    if (lower.value)
        return oru_do_range_add_value(range, upper.open ? ORU_RANGE_AT_LEAST : ORU_RANGE_EQUAL,
                                      lower.value.get(), nullptr);
    return ORU_OK;
}

bool is_removed(char c) {
    return c == '(' || c == ')' || c == ' ';
}

// One piece between bars: a bound, or two around the first two dots.
void add_piece(ORUDoRange *range, char *piece) {
    char *dots = std::strstr(piece, "..");
    if (dots != nullptr)
        *dots = '\0';
    oru_do_range_add_lower_upper(range, piece, dots != nullptr ? dots + 2 : nullptr);
}

// Cuts the text at its bars; an empty last piece is none.
void add_pieces(ORUDoRange *range, char *text) {
    while (*text != '\0') {
        char *bar = std::strchr(text, '|');
        if (bar != nullptr)
            *bar = '\0';
        add_piece(range, text);
        if (bar == nullptr)
            return;
        text = bar + 1;
    }
}

bool token_is(const char *const *tokens, int32_t count, int32_t index, const char *text) {
    return index < count && std::strcmp(tokens[index], text) == 0;
}

}  // namespace

Ref<ORUDoValue> oru::value_from_constraint_text(const char *text, int32_t typecode, int32_t &code) {
    auto value = value_from_text(text, typecode, code);
    return value && is_whole(*value) ? std::move(value) : Ref<ORUDoValue>();
}

int32_t oru_do_range_add_lower_upper(ORUDoRange *range, const char *lower, const char *upper) {
    ORU_REQUIRE(range);
    if (range->typecode == ORU_DO_TYPE_UNKNOWN && lower != nullptr)
        range->typecode = infer_type(lower);
    return add_bounds(range, read_lower(lower, range->typecode),
                      read_bound(upper, range->typecode));
}

ORUDoRange *oru_do_range_new_s(const char *str) {
    return oru_do_range_new_s_t(ORU_DO_TYPE_UNKNOWN, str);
}

// The text goes to pieces while it is read, and the range loses its own with the first element.
ORUDoRange *oru_do_range_new_s_t(int32_t typecode, const char *str) {
    ORU_REQUIRE(str);
    auto range = Ref<ORUDoRange>::adopt(oru_do_range_new_t(typecode));
    const Text text(oru::duplicate(str));
    if (!range || !text)
        return nullptr;
    *std::remove_if(text.get(), text.get() + std::strlen(str), is_removed) = '\0';
    range->range_str = oru::duplicate(text.get());
    if (range->range_str == nullptr)
        return nullptr;
    add_pieces(range.get(), text.get());
    return range.release();
}

ORUDoRange *oru_do_range_new_toks_t(int32_t typecode, const char *const *tokens, int32_t count) {
    if (count > 0)
        ORU_REQUIRE(tokens);
    ORUDoRange *range = oru_do_range_new_t(typecode);
    for (int32_t i = 0; range != nullptr && i < count;) {
        if (token_is(tokens, count, i + 1, "..")) {
            if (i + 2 < count)
                oru_do_range_add_lower_upper(range, tokens[i], tokens[i + 2]);
            i += 3;
        } else {
            oru_do_range_add_lower_upper(range, tokens[i], nullptr);
            i += token_is(tokens, count, i + 1, "|") ? 2 : 1;
        }
    }
    return range;
}
