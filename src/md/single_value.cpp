#include "md/single_value.h"

#include <arpa/inet.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "do/strbuf.h"
#include "do/value.h"
#include "frame/object.h"
#include "md/tokens.h"
#include "oru/md_lookup.h"
#include "oru/strbuf.h"
#include "oru/util.h"
#include "oru/value.h"

namespace {

using oru::Ref;
using oru::Text;
using oru::Tokens;
using oru::TokenType;

bool is_address(int family, const char *text) {
    unsigned char bytes[16];
    return inet_pton(family, text, bytes) == 1;
}

// The type of a range whose type is not told, by its first lower bound.
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

Ref<ORUDoValue> parse_bound(const char *text, int32_t type) {
    const size_t length = std::strlen(text);
    if (type == ORU_DO_TYPE_STRING && length > 1 && text[0] == '"' && text[length - 1] == '"') {
        return Ref<ORUDoValue>::adopt(
            oru_do_value_new_string_l(text + 1, static_cast<int32_t>(length - 2)));
    }
    int32_t code = 0;
    auto value = Ref<ORUDoValue>::adopt(oru_do_value_new_from_string(text, type, &code));
    return code == 0 ? std::move(value) : Ref<ORUDoValue>();
}

// The bounds of a range while they are read, as far as they tell whether it is a single value.
struct Range {
    int32_t type;
    Ref<ORUDoValue> first;
    int32_t elements = 0;
    bool paired = false;

    void add(const char *lower, const char *upper);
};

// Null for an open side, and for a text that does not fit the type.
Ref<ORUDoValue> read_bound(const char *text, int32_t type, bool is_lower) {
    if (text == nullptr || std::strcmp(text, "*") == 0)
        return {};
    if (is_lower && oru_do_is_unsigned_int_num_type(type) != 0 && text[0] == '-')
        return parse_bound("0", type);
    return parse_bound(text, type);
}

void Range::add(const char *lower, const char *upper) {
    if (type == ORU_DO_TYPE_UNKNOWN)
        type = infer_type(lower);
    auto low = read_bound(lower, type, true);
    auto high = read_bound(upper, type, false);
    if (!low && !high)
        return;
    paired = paired || (low && high);
    if (elements++ == 0)
        first = low ? std::move(low) : std::move(high);
}

Text text_of_value(ORUDoValue *value) {
    const auto strbuf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!strbuf)
        return Text();
    oru_do_value_to_strbuf(value, 0, strbuf.get());
    const bool whole = oru_do_strbuf_get_err(strbuf.get()) == 0;
    return Text(whole ? oru::duplicate(oru_do_strbuf_to_string(strbuf.get())) : nullptr);
}

// A bound as it is read: what an enumeration's qualified label stands for takes its place.
Text resolved(const char *text) {
    ORUDoValue *value =
        std::strchr(text, '/') != nullptr ? oru_md_get_enum_value_by_name(text) : nullptr;
    return value != nullptr ? text_of_value(value) : Text(oru::duplicate(text));
}

// Reads bounds from `index` on, as long as there are plain words.
void read_range(const Tokens &tokens, int32_t index, Range &range) {
    while (tokens.is(index, TokenType::word)) {
        const Text lower = resolved(tokens.texts[index]);
        const bool pair =
            tokens.is(index + 1, TokenType::dots) && tokens.is(index + 2, TokenType::word);
        const Text upper = pair ? resolved(tokens.texts[index + 2]) : Text();
        if (!lower || (pair && !upper))
            return;
        range.add(lower.get(), upper.get());
        index += pair ? 3 : 1;
    }
}

}  // namespace

oru::Text oru::single_value(const ORUDoConstraint &constraint, int32_t typecode) {
    const Tokens tokens(constraint.constraint_str);
    int32_t keyword = 0;
    while (keyword < tokens.count && !tokens.is(keyword, TokenType::values))
        ++keyword;
    Range range{typecode, {}};
    read_range(tokens, keyword + 1, range);
    if (range.elements != 1 || range.paired)
        return Text();
    return text_of_value(range.first.get());
}
