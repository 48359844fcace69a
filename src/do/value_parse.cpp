// Values from text. Numbers are stored cut to the width of their type: ranges are the business of
// constraints.
#include <arpa/inet.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "do/uri.h"
#include "do/value.h"
#include "do/vlist.h"
#include "frame/text.h"
#include "oru/hex.h"
#include "oru/rc.h"
#include "oru/vlist.h"

namespace {

using oru::Text;

// A block of the tagged heap for bytes on their way into a value.
Text byte_block(size_t size) {
    return Text(static_cast<char *>(ph_malloc_named(oru::tag_word(oru::Tag::value_misc), size)));
}

ORUDoValue *fail(int32_t *errp, int32_t rc) {
    *errp = rc;
    return nullptr;
}

// The check that all number parsers share: `errno` was clear before all else.
void check_number(const char *text, const char *end, int32_t *errp) {
    if (errno != 0 || end == text || *end != '\0')
        *errp = ORU_RC_VALUE_TYPE;
}

// What nearly all texts are: digits behind a minus or none, so few that the number fits. All other
// texts, blanks and mistakes among them, are the C library's.
bool read_plain_integer(const char *text, int64_t *out_n) {
    constexpr ptrdiff_t kDigitsThatFit = 18;
    const bool is_negative = *text == '-';
    const char *const first = is_negative ? text + 1 : text;
    const char *at = first;
    int64_t n = 0;
    for (; static_cast<unsigned>(*at - '0') <= 9; ++at) {
        if (at - first == kDigitsThatFit)
            return false;
        n = n * 10 + (*at - '0');
    }
    *out_n = is_negative ? -n : n;
    return at != first && *at == '\0';
}

template <class Parse>
auto parse_integer(Parse *parse, const char *text, int32_t *errp) {
    char *end = nullptr;
    const auto n = parse(text, &end, 10);
    check_number(text, end, errp);
    return n;
}

template <class Parse>
auto parse_real(Parse *parse, const char *text, int32_t *errp) {
    char *end = nullptr;
    const auto x = parse(text, &end);
    check_number(text, end, errp);
    return x;
}

ORUDoValue *new_integer(int32_t type, int64_t n) {
    switch (type) {
        case ORU_DO_TYPE_UNSIGNED_BYTE:
            return oru_do_value_new_unsigned_byte(static_cast<uint8_t>(n));
        case ORU_DO_TYPE_BYTE:
            return oru_do_value_new_byte(static_cast<int8_t>(n));
        case ORU_DO_TYPE_UNSIGNED_SHORT:
            return oru_do_value_new_unsigned_short(static_cast<uint16_t>(n));
        case ORU_DO_TYPE_SHORT:
            return oru_do_value_new_short(static_cast<int16_t>(n));
        case ORU_DO_TYPE_UNSIGNED_INT:
            return oru_do_value_new_unsigned_int(static_cast<uint32_t>(n));
        case ORU_DO_TYPE_INT:
            return oru_do_value_new_int(static_cast<int32_t>(n));
        case ORU_DO_TYPE_UNSIGNED_LONG:
            return oru_do_value_new_unsigned_long(static_cast<uint64_t>(n));
        case ORU_DO_TYPE_DATETIME:
            return oru_do_value_new_datetime(n);
        case ORU_DO_TYPE_DURATION:
            return oru_do_value_new_duration(n);
        default:
            return oru_do_value_new_long(n);
    }
}

[[gnu::noinline]] int64_t read_any_integer(const char *text, int32_t type, int32_t *errp) {
    if (type == ORU_DO_TYPE_UNSIGNED_INT || type == ORU_DO_TYPE_UNSIGNED_LONG)
        return static_cast<int64_t>(parse_integer(std::strtoul, text, errp));
    return parse_integer(std::strtol, text, errp);
}

// A status that the caller brought stops an integer too.
ORUDoValue *integer_from_text(const char *text, int32_t type, int32_t *errp) {
    int64_t n = 0;
    if (!read_plain_integer(text, &n)) [[unlikely]]
        n = read_any_integer(text, type, errp);
    return *errp == ORU_OK ? new_integer(type, n) : nullptr;
}

ORUDoValue *boolean_from_text(const char *text, int32_t *errp) {
    if (std::strcmp(text, "true") == 0)
        return oru_do_value_new_boolean(1);
    if (std::strcmp(text, "false") == 0)
        return oru_do_value_new_boolean(0);
    return fail(errp, ORU_RC_WRONG_DATA_TYPE);
}

ORUDoValue *uri_from_text(const char *text, int32_t type) {
    const auto uri = oru::Ref<ORUDoUri>::adopt(oru_do_uri_new(text));
    if (!uri)
        return nullptr;
    if (type == ORU_DO_TYPE_ANY_URI)
        return oru_do_value_new_any_uri(uri.get());
    return type == ORU_DO_TYPE_MR_URI ? oru_do_value_new_mr_uri(uri.get())
                                      : oru_do_value_new_coll_uri(uri.get());
}

using NewBytes = ORUDoValue *(const void *, int32_t);

// Pairs of digits. `no_memory` is the status when the block for the bytes cannot be had.
ORUDoValue *bytes_from_hex(const char *text, NewBytes *make, int32_t *errp, int32_t no_memory) {
    const size_t length = std::strlen(text);
    if (length % 2 != 0)
        return fail(errp, ORU_RC_VALUE_TYPE);
    const Text block = byte_block(length / 2 + 1);
    if (!block) {
        if (no_memory != ORU_OK)
            *errp = no_memory;
        return nullptr;
    }
    const int32_t count = oru_util_strtoh(text, static_cast<int32_t>(length), block.get());
    return make(block.get(), count);
}

// An address in its usual notation; what follows the first slash is the length of a prefix, which
// is kept in one more byte.
ORUDoValue *address_from_text(int family, const char *address, const char *prefix, int32_t *errp) {
    uint8_t bytes[sizeof(in6_addr) + 1];
    int32_t count = family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
    if (inet_pton(family, address, bytes) != 1)
        return fail(errp, ORU_RC_VALUE_TYPE);
    if (prefix != nullptr) {
        const auto length = static_cast<unsigned long>(std::strtol(prefix, nullptr, 10));
        if (length > UINT8_MAX)
            return fail(errp, ORU_RC_GENERAL);
        bytes[count++] = static_cast<uint8_t>(length);
    }
    return oru_do_value_new_ip_address(bytes, count);
}

ORUDoValue *ip_address_from_text(const char *text, int32_t *errp) {
    const Text copy(oru::duplicate(text));
    if (!copy)
        return fail(errp, ORU_RC_MALLOC);
    char *rest = nullptr;
    const char *address = strtok_r(copy.get(), "/", &rest);
    if (address == nullptr)
        return fail(errp, ORU_RC_GENERAL);
    const char *prefix = strtok_r(nullptr, "/", &rest);
    if (std::strchr(address, '.') != nullptr)
        return address_from_text(AF_INET, address, prefix, errp);
    if (std::strchr(address, ':') != nullptr)
        return address_from_text(AF_INET6, address, prefix, errp);
    // The whole text, not the token: it has a character, so an even length is 2 or more.
    return bytes_from_hex(text, oru_do_value_new_ip_address, errp, ORU_OK);
}

// Digits in pairs with dots anywhere between them. The count of bytes, or -1.
int32_t nsap_bytes(const char *text, char *out) {
    int32_t digits = 0;
    for (; *text != '\0'; ++text) {
        if (*text == '.')
            continue;
        if (std::isxdigit(static_cast<unsigned char>(*text)) == 0)
            return -1;
        const int32_t digit = oru_util_ctoh(static_cast<unsigned char>(*text));
        char &byte = out[digits / 2];
        byte = static_cast<char>(digits % 2 == 0 ? digit << 4 : static_cast<uint8_t>(byte) | digit);
        ++digits;
    }
    return digits % 2 == 0 ? digits / 2 : -1;
}

constexpr int32_t kLongestNsapAddress = 20;

ORUDoValue *nsap_address_from_text(const char *text, int32_t *errp) {
    if (*text == '\0')
        return fail(errp, ORU_RC_VALUE_TYPE);
    const Text block = byte_block(std::strlen(text));
    if (!block)
        return nullptr;
    const int32_t count = nsap_bytes(text, block.get());
    if (count < 1 || count > kLongestNsapAddress)
        return fail(errp, ORU_RC_VALUE_TYPE);
    auto *val = oru_do_value_new_nsap_address(block.get(), count);
    return val != nullptr ? val : fail(errp, ORU_RC_VALUE_TYPE);
}

// Words between blanks; an empty text has none.
ORUDoValue *bits_from_text(const char *text, int32_t *errp) {
    const auto list = oru::Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    if (!list)
        return fail(errp, ORU_RC_MALLOC);
    const Text copy(oru::duplicate(text));
    if (!copy)
        return fail(errp, ORU_RC_MALLOC);
    char *rest = nullptr;
    for (char *word = strtok_r(copy.get(), " ", &rest); word != nullptr;
         word = strtok_r(nullptr, " ", &rest)) {
        const auto bit = oru::Ref<ORUDoValue>::adopt(oru_do_value_new_enumeration(word));
        if (!bit || oru_do_vlist_add(list.get(), bit.get()) < 0)
            return fail(errp, ORU_RC_MALLOC);
    }
    return oru_do_value_new_bits(list.get());
}

bool is_parsed_as_integer(int32_t type) {
    return oru::is_integer_type(type) || type == ORU_DO_TYPE_DATETIME ||
           type == ORU_DO_TYPE_DURATION;
}

// All types but those that are parsed as integers.
[[gnu::noinline]] ORUDoValue *other_from_text(const char *text, int32_t type, int32_t *errp) {
    switch (type) {
        // A text that is no number still makes a value, beside the status.
        case ORU_DO_TYPE_FLOAT:
            return oru_do_value_new_float(parse_real(std::strtof, text, errp));
        case ORU_DO_TYPE_DOUBLE:
            return oru_do_value_new_double(parse_real(std::strtod, text, errp));
        case ORU_DO_TYPE_STRING:
        case ORU_DO_TYPE_UNKNOWN:
            return oru_do_value_new_string(text);
        case ORU_DO_TYPE_NULL:
            return oru_do_value_new_null();
        case ORU_DO_TYPE_BOOLEAN:
            return boolean_from_text(text, errp);
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return uri_from_text(text, type);
        case ORU_DO_TYPE_HEX_BINARY:
            return bytes_from_hex(text, oru_do_value_new_hex_binary, errp, ORU_RC_MALLOC);
        case ORU_DO_TYPE_IP_ADDRESS:
            return ip_address_from_text(text, errp);
        case ORU_DO_TYPE_NSAP_ADDRESS:
            return nsap_address_from_text(text, errp);
        case ORU_DO_TYPE_ENUMERATION:
            return oru_do_value_new_enumeration(text);
        case ORU_DO_TYPE_BITS:
            return bits_from_text(text, errp);
        default:
            return fail(errp, ORU_RC_WRONG_DATA_TYPE);
    }
}

}  // namespace

ORUDoValue *oru_do_value_new_from_string(const char *text, int32_t type, int32_t *errp) {
    return oru_do_value_new_from_string_fmt(text, type, oru::default_formatter(), errp);
}

ORUDoValue *oru_do_value_new_from_string_fmt(const char *text, int32_t type,
                                             const ORUDoValueFormatter *formatter, int32_t *errp) {
    if (formatter != nullptr && formatter->parse != nullptr)
        return formatter->parse(formatter->context, text, type, errp);
    ORU_REQUIRE(text);
    ORU_REQUIRE(errp);
    errno = 0;
    return is_parsed_as_integer(type) ? integer_from_text(text, type, errp)
                                      : other_from_text(text, type, errp);
}

ORUDoValue *oru_do_value_new_from_conversion(ORUDoValue *val, int32_t type, int32_t *errp) {
    ORU_REQUIRE(val);
    ORU_REQUIRE(errp);
    *errp = ORU_OK;
    if (val->type != ORU_DO_TYPE_STRING)
        return fail(errp, ORU_RC_VALUE_TYPE);
    if (val->data.bytes == nullptr)
        return nullptr;
    return oru_do_value_new_from_string(val->data.bytes, type, errp);
}
