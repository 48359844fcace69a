// The text of a value as the key of a URI.
#include "do/uri.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace {

void add_text(const char *text, ORUDoStrbuf &out) {
    if (text != nullptr)
        oru::strbuf_append(out, text);
}

void add_number(ORUDoValue *value, int32_t type, ORUDoStrbuf *out) {
    int32_t rc = ORU_OK;
    switch (type) {
        case ORU_DO_TYPE_UNSIGNED_BYTE:
            oru_do_strbuf_add_unsigned_long(out, oru_do_value_get_unsigned_byte(value, &rc));
            return;
        case ORU_DO_TYPE_BYTE:
            oru_do_strbuf_add_long(out, oru_do_value_get_byte(value, &rc));
            return;
        case ORU_DO_TYPE_UNSIGNED_SHORT:
            oru_do_strbuf_add_unsigned_long(out, oru_do_value_get_unsigned_short(value, &rc));
            return;
        case ORU_DO_TYPE_SHORT:
            oru_do_strbuf_add_long(out, oru_do_value_get_short(value, &rc));
            return;
        case ORU_DO_TYPE_UNSIGNED_INT:
            oru_do_strbuf_add_unsigned_long(out, oru_do_value_get_unsigned_int(value, &rc));
            return;
        case ORU_DO_TYPE_INT:
            oru_do_strbuf_add_long(out, oru_do_value_get_int(value, &rc));
            return;
        case ORU_DO_TYPE_UNSIGNED_LONG:
            oru_do_strbuf_add_unsigned_long(out, oru_do_value_get_unsigned_long(value, &rc));
            return;
        case ORU_DO_TYPE_LONG:
            oru_do_strbuf_add_long(out, oru_do_value_get_long(value, &rc));
            return;
        case ORU_DO_TYPE_FLOAT:
            oru_do_strbuf_add_double(out, static_cast<double>(oru_do_value_get_float(value, &rc)));
            return;
        case ORU_DO_TYPE_DOUBLE:
            oru_do_strbuf_add_double(out, oru_do_value_get_double(value, &rc));
            return;
        case ORU_DO_TYPE_DATETIME:
            oru_do_strbuf_add_long(out, oru_do_value_get_datetime(value, &rc));
            return;
        case ORU_DO_TYPE_DURATION:
            oru_do_strbuf_add_long(out, oru_do_value_get_duration(value, &rc));
            return;
        default:
            return;
    }
}

void add_bytes(ORUDoValue *value, int32_t type, ORUDoStrbuf *out) {
    int32_t rc = ORU_OK;
    int32_t len = 0;
    const uint8_t *bytes =
        type == ORU_DO_TYPE_HEX_BINARY   ? oru_do_value_get_hex_binary(value, &len, &rc)
        : type == ORU_DO_TYPE_IP_ADDRESS ? oru_do_value_get_ip_address(value, &len, &rc)
                                         : oru_do_value_get_nsap_address(value, &len, &rc);
    if (bytes != nullptr)
        oru_do_strbuf_add_hexbuf(out, bytes, len);
}

void add_value(ORUDoValue *value, ORUDoStrbuf *out) {
    int32_t rc = ORU_OK;
    const int32_t type = oru_do_value_get_type(value);
    switch (type) {
        case ORU_DO_TYPE_UNKNOWN:
        case ORU_DO_TYPE_DEFAULT:
        case ORU_DO_TYPE_NULL:
            return add_text(oru_do_get_typestr_by_typecode(type), *out);
        case ORU_DO_TYPE_STRING:
            return add_text(oru_do_value_get_string(value, &rc), *out);
        case ORU_DO_TYPE_BOOLEAN:
            return add_text(oru_do_value_get_boolean(value, &rc) != 0 ? "true" : "false", *out);
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            oru_do_uri_to_strbuf(oru_do_value_get_uri(value), 0, out);
            return;
        case ORU_DO_TYPE_HEX_BINARY:
        case ORU_DO_TYPE_IP_ADDRESS:
        case ORU_DO_TYPE_NSAP_ADDRESS:
            return add_bytes(value, type, out);
        case ORU_DO_TYPE_ENUMERATION:
            return add_text(oru_do_value_get_enumeration(value, &rc), *out);
        case ORU_DO_TYPE_CHOICE:
            oru_do_nvlist_to_strbuf(oru_do_value_get_choice(value, &rc), 0, out);
            return;
        case ORU_DO_TYPE_SEQUENCE:
            oru_do_nvlist_to_strbuf(oru_do_value_get_sequence(value, &rc), 0, out);
            return;
        case ORU_DO_TYPE_ARRAY:
            oru_do_vlist_to_strbuf(oru_do_value_get_array(value, &rc), 0, out);
            return;
        case ORU_DO_TYPE_BITS:
            oru_do_vlist_to_strbuf(oru_do_value_get_bits(value, &rc), 0, out);
            return;
        default:
            return add_number(value, type, out);
    }
}

}  // namespace

int32_t oru_do_uri_value_to_keystr(ORUDoValue *value, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(strbuf);
    if (value == nullptr)
        return ORU_OK;
    const auto text = oru::Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text)
        return ORU_RC_MALLOC;
    add_value(value, text.get());
    const int32_t err = oru_do_strbuf_get_err(text.get());
    if (err != ORU_OK)
        return err;
    return oru_do_uri_escape_str_l(oru_do_strbuf_to_string(text.get()),
                                   oru_do_strbuf_get_len(text.get()), strbuf);
}
