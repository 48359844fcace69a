#include "cells.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <memory>

namespace embedded {

namespace {

std::string_view bytes_of(const void *data, size_t size) {
    return {static_cast<const char *>(data), size};
}

/* The bytes of a number, the highest first. */
std::string_view big_endian(uint64_t number, Texts &texts) {
    std::string &bytes = texts.emplace_back();
    for (int shift = 56; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift);
    return bytes;
}

uint64_t from_big_endian(std::string_view bytes) {
    uint64_t number = 0;
    for (const char c : bytes)
        number = number << 8 | static_cast<unsigned char>(c);
    return number;
}

/* The engine keeps no NaN. */
Cell cell_of_real(double number, Texts &texts) {
    if (!std::isnan(number))
        return Cell::of_real(number);
    return Cell::of_blob(big_endian(std::bit_cast<uint64_t>(number), texts));
}

Cell cell_of_bytes(ORUDoValue *value, const uint8_t *(*get)(ORUDoValue *, int32_t *, int32_t *)) {
    int32_t length = 0;
    int32_t status = 0;
    const uint8_t *const data = get(value, &length, &status);
    return Cell::of_blob(bytes_of(data, static_cast<size_t>(length)));
}

Cell cell_of_json(ORUDoValue *value, Texts &texts) {
    const Buffer json = made<Buffer>(oru_do_strbuf_new());
    if (oru_do_value_to_json(value, json.get()) != ORU_OK)
        throw std::bad_alloc();
    return Cell::of_text(texts.emplace_back(text_in(json)));
}

double real_of(const Cell &cell) {
    return cell.kind == Cell::Kind::real ? cell.real
                                         : std::bit_cast<double>(from_big_endian(cell.bytes));
}

Value value_of_uri(int32_t type, std::string_view text) {
    const Uri uri = made<Uri>(oru_do_uri_new_l(text.data(), static_cast<int32_t>(text.size())));
    if (type == ORU_DO_TYPE_MR_URI)
        return made_value(oru_do_value_new_mr_uri(uri.get()));
    return made_value(type == ORU_DO_TYPE_COLL_URI ? oru_do_value_new_coll_uri(uri.get())
                                                   : oru_do_value_new_any_uri(uri.get()));
}

struct JsonContextDeleter {
    void operator()(ORUDoJsonCtxData *context) const { oru_do_json_delete_ctx_data(context); }
};

/* Null for a text with an error, also where a value came out of it: it may be without some of its
   members then. */
Value read_json(std::string_view text) {
    const std::unique_ptr<ORUDoJsonCtxData, JsonContextDeleter> context(
        oru_do_json_parse(text.data(), static_cast<int32_t>(text.size()), 0));
    if (context == nullptr || context->err != nullptr || context->completed_obj == nullptr)
        return {};
    const oru_json_type_info *const type =
        oru_json_get_type_info_by_type_code(context->completed_type);
    if (type == nullptr || type->value_type_code == ORU_DO_TYPE_UNKNOWN)
        return {};
    return Value(static_cast<ORUDoValue *>(std::exchange(context->completed_obj, nullptr)));
}

Value value_of_json(std::string_view text) {
    Value value;
    if (!certain(true, [&] {
            value = read_json(text);
            return static_cast<bool>(value);
        }))
        throw StoreFault(StoreFault::Kind::damaged, "a value in the database cannot be read");
    return value;
}

Value value_of_integer(int32_t type, int64_t number) {
    switch (type) {
        case ORU_DO_TYPE_UNSIGNED_BYTE:
            return made_value(oru_do_value_new_unsigned_byte(static_cast<uint8_t>(number)));
        case ORU_DO_TYPE_BYTE:
            return made_value(oru_do_value_new_byte(static_cast<int8_t>(number)));
        case ORU_DO_TYPE_UNSIGNED_SHORT:
            return made_value(oru_do_value_new_unsigned_short(static_cast<uint16_t>(number)));
        case ORU_DO_TYPE_SHORT:
            return made_value(oru_do_value_new_short(static_cast<int16_t>(number)));
        case ORU_DO_TYPE_UNSIGNED_INT:
            return made_value(oru_do_value_new_unsigned_int(static_cast<uint32_t>(number)));
        case ORU_DO_TYPE_INT:
            return made_value(oru_do_value_new_int(static_cast<int32_t>(number)));
        case ORU_DO_TYPE_UNSIGNED_LONG:
            return made_value(oru_do_value_new_unsigned_long(static_cast<uint64_t>(number)));
        case ORU_DO_TYPE_LONG:
            return made_value(oru_do_value_new_long(number));
        case ORU_DO_TYPE_BOOLEAN:
            return made_value(oru_do_value_new_boolean(static_cast<int32_t>(number)));
        case ORU_DO_TYPE_DATETIME:
            return made_value(oru_do_value_new_datetime(number));
        case ORU_DO_TYPE_DURATION:
            return made_value(oru_do_value_new_duration(number));
        default:
            throw StoreFault(StoreFault::Kind::damaged, "a number of a type without numbers");
    }
}

Value plain_value_of(int32_t type, const Cell &cell) {
    // no bytes have no address, for which the makers would give a null value
    const char *const bytes = cell.bytes.empty() ? "" : cell.bytes.data();
    const auto length = static_cast<int32_t>(cell.bytes.size());
    switch (type) {
        case ORU_DO_TYPE_STRING:
            return made_value(oru_do_value_new_string_l(bytes, length));
        case ORU_DO_TYPE_ENUMERATION:
            return made_value(oru_do_value_new_enumeration_l(bytes, length));
        case ORU_DO_TYPE_FLOAT:
            return made_value(oru_do_value_new_float(static_cast<float>(real_of(cell))));
        case ORU_DO_TYPE_DOUBLE:
            return made_value(oru_do_value_new_double(real_of(cell)));
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return value_of_uri(type, {bytes, cell.bytes.size()});
        case ORU_DO_TYPE_HEX_BINARY:
            return made_value(oru_do_value_new_hex_binary(bytes, length));
        case ORU_DO_TYPE_IP_ADDRESS:
            return made_value(oru_do_value_new_ip_address(bytes, length));
        case ORU_DO_TYPE_NSAP_ADDRESS:
            return made_value(oru_do_value_new_nsap_address(bytes, length));
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
        case ORU_DO_TYPE_ARRAY:
        case ORU_DO_TYPE_BITS:
            return value_of_json(cell.bytes);
        default:
            return value_of_integer(type, cell.kind == Cell::Kind::integer
                                              ? cell.integer
                                              : static_cast<int64_t>(from_big_endian(cell.bytes)));
    }
}

}  // namespace

Cell cell_of(ORUDoValue *value, Texts &texts) {
    int32_t status = 0;
    const int32_t type = oru_do_value_get_type(value);
    switch (type) {
        case ORU_DO_TYPE_NULL:
        case ORU_DO_TYPE_DEFAULT:
            return {};
        case ORU_DO_TYPE_STRING:
            return Cell::of_text(bytes_of(oru_do_value_get_string(value, &status),
                                          static_cast<size_t>(oru_do_value_get_length(value))));
        case ORU_DO_TYPE_ENUMERATION:
            return Cell::of_text(view(oru_do_value_get_enumeration(value, &status)));
        case ORU_DO_TYPE_BOOLEAN:
            return Cell::of_integer(oru_do_value_get_boolean(value, &status) != 0);
        case ORU_DO_TYPE_FLOAT:
        case ORU_DO_TYPE_DOUBLE:
            return cell_of_real(oru_do_value_to_double(value, &status), texts);
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            return Cell::of_text(view(oru_do_uri_get_uri_str(oru_do_value_get_uri(value))));
        case ORU_DO_TYPE_HEX_BINARY:
            return cell_of_bytes(value, oru_do_value_get_hex_binary);
        case ORU_DO_TYPE_IP_ADDRESS:
            return cell_of_bytes(value, oru_do_value_get_ip_address);
        case ORU_DO_TYPE_NSAP_ADDRESS:
            return cell_of_bytes(value, oru_do_value_get_nsap_address);
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
        case ORU_DO_TYPE_ARRAY:
        case ORU_DO_TYPE_BITS:
            return cell_of_json(value, texts);
        default:
            break;
    }
    const int64_t number = oru_do_value_to_long(value, &status);
    if (type == ORU_DO_TYPE_UNSIGNED_LONG && number < 0)
        return Cell::of_blob(big_endian(static_cast<uint64_t>(number), texts));
    return Cell::of_integer(number);
}

Value value_of(const Attribute &attribute) {
    if (attribute.cell.kind == Cell::Kind::null)
        return made_value(oru_do_value_new_null());
    Value value = plain_value_of(attribute.type, attribute.cell);
    if (!attribute.type_name.empty())
        set_type_name(value, attribute.type_name);
    return value;
}

}  // namespace embedded
