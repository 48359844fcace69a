#include "keys.h"

#include <algorithm>
#include <charconv>

namespace embedded {

namespace {

constexpr std::string_view kEscaped = " !#$%&'()*,/:;=?@[]+";
constexpr char kDigits[] = "0123456789ABCDEF";

void append_big_endian(uint64_t number, int bytes, std::string &out) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        out += static_cast<char>(number >> shift);
}

void append_signed(int64_t number, std::string &key) {
    key += 'i';
    append_big_endian(static_cast<uint64_t>(number) ^ (uint64_t{1} << 63), 8, key);
}

void append_unsigned(uint64_t number, std::string &key) {
    key += 'u';
    append_big_endian(number, 8, key);
}

void append_bytes(char letter, std::string_view bytes, std::string &key) {
    key += letter;
    append_big_endian(bytes.size(), 4, key);
    key += bytes;
}

template <typename Number>
bool read_number(std::string_view text, Number &number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

struct Bounds {
    int64_t least;
    uint64_t greatest;
};

Bounds bounds_of(int32_t type) {
    if (oru_do_is_signed_int_num_type(type) != 0)
        return {oru_do_constraint_get_min_signed_int_num(type),
                static_cast<uint64_t>(oru_do_constraint_get_max_signed_int_num(type))};
    return {0, oru_do_constraint_get_max_unsigned_int_num(type)};
}

bool append_number(const AttributeType &key, std::string_view text, Place &place) {
    const Bounds bounds = bounds_of(key.type);
    if (oru_do_is_signed_int_num_type(key.type) != 0) {
        int64_t number = 0;
        if (!read_number(text, number) || number < bounds.least ||
            (number > 0 && static_cast<uint64_t>(number) > bounds.greatest))
            return false;
        append_signed(number, place.key);
        place.path += std::to_string(number);
        return true;
    }
    uint64_t number = 0;
    if (!read_number(text, number) || number > bounds.greatest)
        return false;
    append_unsigned(number, place.key);
    place.path += std::to_string(number);
    return true;
}

void append_name(Place &place, const AttributeType &key) {
    place.path += ';';
    place.path += key.name;
    place.path += '=';
}

std::string key_text_of(ORUDoValue *value) {
    const Buffer buffer = made<Buffer>(oru_do_strbuf_new());
    oru_do_uri_value_to_keystr(value, buffer.get());
    return text_in(buffer);
}

/* The keys of the other types: addresses and bytes as bytes, what is left as text. */
bool append_other(Place &place, const AttributeType &key, ORUDoValue *value) {
    int32_t status = 0;
    int32_t length = 0;
    const uint8_t *bytes = nullptr;
    switch (key.type) {
        case ORU_DO_TYPE_IP_ADDRESS:
            bytes = oru_do_value_get_ip_address(value, &length, &status);
            break;
        case ORU_DO_TYPE_HEX_BINARY:
            bytes = oru_do_value_get_hex_binary(value, &length, &status);
            break;
        case ORU_DO_TYPE_NSAP_ADDRESS:
            bytes = oru_do_value_get_nsap_address(value, &length, &status);
            break;
        default:
            break;
    }
    if (status != 0)
        return false;
    const std::string text = key_text_of(value);
    place.path += text;
    if (bytes == nullptr) {
        append_bytes('s', text, place.key);
        return true;
    }
    append_bytes('b', {reinterpret_cast<const char *>(bytes), static_cast<size_t>(length)},
                 place.key);
    return true;
}

/* Bytes in addresses are pairs of digits, as the library writes them. */
Value value_of_key_text(const AttributeType &key, const std::string &text) {
    int32_t status = 0;
    const bool is_address = key.type == ORU_DO_TYPE_IP_ADDRESS;
    const bool is_digits = text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!is_address || !is_digits)
        return value_from_text(text, key.type);
    const Value bytes = value_from_text(text, ORU_DO_TYPE_HEX_BINARY);
    int32_t length = 0;
    if (!bytes)
        return {};
    const uint8_t *const data = oru_do_value_get_hex_binary(bytes.get(), &length, &status);
    const bool is_whole = length == 4 || length == 5 || length == 16 || length == 17;
    return is_whole ? made_value(oru_do_value_new_ip_address(data, length)) : Value();
}

}  // namespace

void append_escaped(std::string_view text, std::string &out) {
    for (const char c : text) {
        if (kEscaped.find(c) == std::string_view::npos) {
            out += c;
        } else {
            out += '%';
            out += kDigits[static_cast<unsigned char>(c) >> 4];
            out += kDigits[c & 15];
        }
    }
}

bool append_unescaped(std::string_view escaped, std::string &out) {
    for (size_t at = 0; at < escaped.size(); at++) {
        if (escaped[at] != '%') {
            out += escaped[at];
            continue;
        }
        if (at + 2 >= escaped.size())
            return false;
        const auto high = std::string_view(kDigits).find(escaped[at + 1]);
        const auto low = std::string_view(kDigits).find(escaped[at + 2]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return false;
        const char c = static_cast<char>(high << 4 | low);
        if (kEscaped.find(c) == std::string_view::npos)
            return false;
        out += c;
        at += 2;
    }
    return true;
}

Place below(const Place &parent, std::string_view reference) {
    Place place = parent;
    place.key[1]++;
    place.key += reference;
    place.key += '\0';
    place.path += '/';
    place.path += reference;
    return place;
}

namespace {

/* How long the value of a key is that stands at a place in a key of the store. Keys and addresses
   of a damaged database need not fit together. */
size_t value_size(std::string_view key, size_t at) {
    constexpr size_t kHead = 1 + 4;
    if (at + kHead > key.size())
        throw StoreFault(StoreFault::Kind::damaged, "a key in the database has no end");
    if (key[at] == 'i' || key[at] == 'u')
        return 1 + 8;
    size_t length = 0;
    for (size_t i = 1; i < kHead; i++)
        length = length << 8 | static_cast<unsigned char>(key[at + i]);
    return kHead + length;
}

}  // namespace

namespace {

/* The places in a resource's key and path that its last segment divides them at. */
struct LastSegment {
    size_t key_begin = 2;
    size_t key_values = 2; /* behind the reference */
    size_t path_begin = 0;
    size_t path_values = 0;
};

LastSegment last_segment_of(const Place &place) {
    LastSegment last;
    size_t at = last.key_begin;
    for (size_t slash = 0; slash < place.path.size();) {
        const size_t end = std::min(place.path.find('/', slash + 1), place.path.size());
        const std::string_view segment(place.path.data() + slash + 1, end - slash - 1);
        const size_t reference = segment.substr(0, segment.find(';')).size();
        last = {at, at + reference + 1, slash, slash + 1 + reference};
        at = last.key_values;
        for (const char c : segment)
            at += c == ';' ? value_size(place.key, at) : 0;
        slash = end;
    }
    return last;
}

}  // namespace

Place collection_of(const Place &place) {
    const LastSegment last = last_segment_of(place);
    return {place.key.substr(0, last.key_values), place.path.substr(0, last.path_values)};
}

Place parent_of(const Place &place) {
    const LastSegment last = last_segment_of(place);
    Place parent = {place.key.substr(0, last.key_begin), place.path.substr(0, last.path_begin)};
    parent.key[1]--;
    return parent;
}

bool add_key_text(Place &place, const AttributeType &key, std::string_view escaped) {
    append_name(place, key);
    if (key.type <= ORU_DO_TYPE_LONG || key.type == ORU_DO_TYPE_DATETIME ||
        key.type == ORU_DO_TYPE_DURATION)
        return append_number(key, escaped, place);
    std::string text;
    if (!append_unescaped(escaped, text) || text.find('\0') != std::string::npos)
        return false;
    if (key.type == ORU_DO_TYPE_STRING || key.type == ORU_DO_TYPE_ENUMERATION) {
        append_bytes('s', text, place.key);
        append_escaped(text, place.path);
        return true;
    }
    const Value value = value_of_key_text(key, text);
    return value && append_other(place, key, value.get());
}

bool add_key_value(Place &place, const AttributeType &key, ORUDoValue *value) {
    int32_t status = 0;
    if (oru_do_value_is_string(value) != 0) {
        const std::string_view given = view(oru_do_value_get_string(value, &status));
        // a text with a zero in it ends there in an address
        if (static_cast<size_t>(oru_do_value_get_length(value)) != given.size())
            return false;
        std::string text;
        append_escaped(given, text);
        return add_key_text(place, key, text);
    }
    const Buffer text = made<Buffer>(oru_do_strbuf_new());
    return oru_do_uri_value_to_keystr(value, text.get()) == ORU_OK &&
           add_key_text(place, key, text_in(text));
}

Place begin_secondary_key(const Place &collection, size_t group) {
    return {'s' + collection.key + static_cast<char>(group), {}};
}

Range range_of(std::string prefix) {
    Range range{prefix, std::move(prefix)};
    while (!range.end.empty() && range.end.back() == '\xff')
        range.end.pop_back();
    if (!range.end.empty())
        range.end.back() = static_cast<char>(range.end.back() + 1);
    return range;
}

Range descendants_of(const Place &place, size_t levels) {
    std::string prefix = place.key;
    prefix[1] = static_cast<char>(place.depth() + levels);
    if (levels > 0)
        return range_of(std::move(prefix));
    Range range{prefix, prefix};
    range.end += '\0';
    return range;
}

}  // namespace embedded
