#include "do/uri.h"
#include "do/value.h"
#include "json/types.h"
#include "json/write.h"
#include "oru/nvlist.h"

namespace {

using oru::json::put;
using oru::json::put_escaped;
using oru::json::put_raw;

bool is_complex(const ORUDoValue &val) {
    return oru_do_is_complex_type(val.type) != 0;
}

bool is_list(const ORUDoValue &val) {
    return val.type == ORU_DO_TYPE_ARRAY || val.type == ORU_DO_TYPE_BITS;
}

// A value that should hold an object and does not is not written at all.
bool lacks_object(const ORUDoValue &val) {
    const bool holds = is_complex(val) || is_list(val) || oru_do_is_uri_type(val.type) != 0;
    return holds && val.data.object == nullptr;
}

void put_string(ORUDoStrbuf *buf, const ORUDoValue &val, uint32_t options) {
    const bool hide = (options & ORU_JSON_OPT_HIDE_PASSWORDS) != 0 &&
                      oru::is_hidden_secret(val, ORU_DO_OPT_HIDE_SECRETS);
    put_escaped(buf, hide ? std::string_view(oru::kHiddenText) : oru::sized_payload(val));
}

void put_hex(ORUDoStrbuf *buf, const ORUDoValue &val) {
    const std::string_view bytes = oru::sized_payload(val);
    put(buf, "\"");
    oru_do_strbuf_add_hexbuf(buf, bytes.data(), static_cast<int32_t>(bytes.size()));
    put(buf, "\"");
}

// The bare form of a scalar: the payload behind its tag, and its compact form.
void put_scalar(ORUDoStrbuf *buf, const ORUDoValue &val, uint32_t options) {
    switch (val.type) {
        case ORU_DO_TYPE_UNSIGNED_LONG:
            oru_do_strbuf_add_unsigned_long(buf, oru::number_of<uint64_t>(val));
            break;
        case ORU_DO_TYPE_STRING:
            put_string(buf, val, options);
            break;
        case ORU_DO_TYPE_BOOLEAN:
            put(buf, oru::boolean_text(val));
            break;
        case ORU_DO_TYPE_FLOAT:
        case ORU_DO_TYPE_DOUBLE:
            oru_do_strbuf_add_double(buf, oru::real_of(val));
            break;
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            put_raw(buf, oru_do_uri_get_uri_str(val.data.uri));
            break;
        case ORU_DO_TYPE_HEX_BINARY:
        case ORU_DO_TYPE_IP_ADDRESS:
        case ORU_DO_TYPE_NSAP_ADDRESS:
            put_hex(buf, val);
            break;
        case ORU_DO_TYPE_ENUMERATION:
            put_raw(buf, oru::sized_payload(val).data());
            break;
        case ORU_DO_TYPE_DEFAULT:
        case ORU_DO_TYPE_UNKNOWN:
            put_raw(buf, "");
            break;
        default:
            oru_do_strbuf_add_long(buf, oru::integer_of(val));
    }
}

void put_named_values(ORUDoStrbuf *buf, ORUDoNvlist *list, uint32_t options) {
    put(buf, "{");
    oru::json::Members members(buf);
    ORUDoIter iter;
    oru_do_nvlist_iter(list, &iter);
    while (ORUDoNvlistItem *item = oru_do_nvlist_get_next(&iter)) {
        members.next(oru_do_nvlist_item_get_name(item));
        oru_do_value_to_json_opt(oru_do_nvlist_item_get_value(item), buf, options);
    }
    put(buf, "}");
}

void put_tagged(ORUDoStrbuf *buf, const ORUDoValue &val, uint32_t options) {
    const uint32_t inner = options & ORU_JSON_OPT_HIDE_PASSWORDS;
    if (is_list(val)) {
        const uint32_t form = val.type == ORU_DO_TYPE_BITS ? ORU_JSON_OPT_BITS : 0;
        oru_do_vlist_to_json_opt(val.data.vlist, buf, inner | form, val.typedef_name);
        return;
    }
    put(buf, oru::json::value_opening(val.type));
    if (is_complex(val)) {
        put_named_values(buf, val.data.nvlist, inner);
    } else {
        put_scalar(buf, val, options);
        oru::json::put_typedef(buf, val.typedef_name);
    }
    put(buf, "}");
}

void put_compact(ORUDoStrbuf *buf, const ORUDoValue &val, uint32_t options) {
    if (val.type == ORU_DO_TYPE_ARRAY) {
        oru_do_vlist_to_json_opt(val.data.vlist, buf, ORU_JSON_OPT_COMPACT, nullptr);
    } else if (val.type == ORU_DO_TYPE_BITS) {
        oru_do_vlist_to_json_opt(val.data.vlist, buf, ORU_JSON_OPT_COMPACT | ORU_JSON_OPT_BITS,
                                 nullptr);
    } else if (is_complex(val)) {
        put_tagged(buf, val, options);  // a bare object would read as a table
    } else {
        put_scalar(buf, val, options);
    }
}

void put_form(ORUDoStrbuf *buf, const ORUDoValue &val, uint32_t options, bool compact) {
    if (val.type == ORU_DO_TYPE_NULL) {
        put(buf, "null");
    } else if (!lacks_object(val)) {
        (compact ? put_compact : put_tagged)(buf, val, options & 0xffffu);
    }
}

}  // namespace

void oru::json::put_value(ORUDoStrbuf *strbuf, const ORUDoValue &val, uint32_t options) {
    put_form(strbuf, val, options, (options & ORU_JSON_OPT_COMPACT) != 0);
}

int32_t oru_do_value_to_json(ORUDoValue *val, ORUDoStrbuf *buf) {
    return oru_do_value_to_json_opt(val, buf, 0);
}

int32_t oru_do_value_to_json_opt(ORUDoValue *val, ORUDoStrbuf *buf, uint32_t options) {
    ORU_REQUIRE(val);
    oru::json::put_value(buf, *val, options);
    return 0;
}

int32_t oru_do_value_to_compact_json(ORUDoValue *val, ORUDoStrbuf *buf) {
    ORU_REQUIRE(val);
    put_form(buf, *val, 0, true);
    return 0;
}

int32_t oru_do_nvlist_to_json(ORUDoNvlist *nvlist, ORUDoStrbuf *buf) {
    return oru_do_nvlist_to_json_opt(nvlist, buf, 0);
}

int32_t oru_do_nvlist_to_json_opt(ORUDoNvlist *nvlist, ORUDoStrbuf *buf, uint32_t options) {
    ORU_REQUIRE(nvlist);
    put(buf, "{\"%nvlist\":");
    put_named_values(buf, nvlist, options);
    put(buf, "}");
    return 0;
}
