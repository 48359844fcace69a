// The XML form of values, on which the forms of all containers rest.
#include "do/strbuf.h"
#include "do/value.h"
#include "do/xml.h"
#include "oru/xml.h"

namespace {

void add_attributes(ORUDoStrbuf *strbuf, const ORUDoValue &val) {
    oru::xml_attribute(strbuf, "type", oru_do_get_typestr_by_typecode(val.type));
    oru::xml_attribute(strbuf, "typedef", val.typedef_name);
    if (val.type == ORU_DO_TYPE_NULL)
        oru::xml_attribute(strbuf, "xsi:null", "true");
}

void add_string(ORUDoStrbuf *strbuf, const ORUDoValue &val, uint32_t opts) {
    const char *text = oru::is_hidden_secret(val, opts) ? oru::kHiddenText : val.data.bytes;
    oru_do_strbuf_add_string_encode_for_xml(strbuf, text);
}

void add_hex(ORUDoStrbuf *strbuf, const ORUDoValue &val) {
    const auto bytes = oru::sized_payload(val);
    oru_do_strbuf_add_hexbuf(strbuf, bytes.data(), static_cast<int32_t>(bytes.size()));
}

// An empty element that has the name of the enumeration's value.
void add_enumeration(ORUDoStrbuf *strbuf, const char *prefix, const ORUDoValue &val) {
    oru::xml_begin_tag(strbuf, prefix, "");
    oru::strbuf_append(*strbuf, oru::sized_payload(val));
    oru_do_strbuf_add_string(strbuf, "/>");
}

// Options are not handed down into lists.
void add_content(ORUDoStrbuf *strbuf, const char *prefix, const char *name, ORUDoValue &val,
                 uint32_t opts) {
    switch (val.type) {
        case ORU_DO_TYPE_UNSIGNED_BYTE:
        case ORU_DO_TYPE_BYTE:
        case ORU_DO_TYPE_UNSIGNED_SHORT:
        case ORU_DO_TYPE_SHORT:
        case ORU_DO_TYPE_UNSIGNED_INT:
        case ORU_DO_TYPE_INT:
        case ORU_DO_TYPE_UNSIGNED_LONG:  // signed here: from 2^63 on it comes out negative
        case ORU_DO_TYPE_LONG:
        case ORU_DO_TYPE_DATETIME:
        case ORU_DO_TYPE_DURATION:
            oru_do_strbuf_add_long(strbuf, oru::integer_of(val));
            break;
        case ORU_DO_TYPE_STRING:
            add_string(strbuf, val, opts);
            break;
        case ORU_DO_TYPE_BOOLEAN:
            oru_do_strbuf_add_string(strbuf, oru::boolean_text(val));
            break;
        case ORU_DO_TYPE_FLOAT:
        case ORU_DO_TYPE_DOUBLE:
            oru_do_strbuf_add_double(strbuf, oru::real_of(val));
            break;
        case ORU_DO_TYPE_ANY_URI:
        case ORU_DO_TYPE_MR_URI:
        case ORU_DO_TYPE_COLL_URI:
            oru_do_strbuf_add_string_encode_for_xml(strbuf, oru::uri_text(val));
            break;
        case ORU_DO_TYPE_HEX_BINARY:
        case ORU_DO_TYPE_NSAP_ADDRESS:
            add_hex(strbuf, val);
            break;
        case ORU_DO_TYPE_IP_ADDRESS:
            oru_do_value_to_strbuf(&val, 0, strbuf);
            break;
        case ORU_DO_TYPE_ENUMERATION:
            add_enumeration(strbuf, prefix, val);
            break;
        case ORU_DO_TYPE_CHOICE:
        case ORU_DO_TYPE_SEQUENCE:
            oru_do_nvlist_to_xml_opt(prefix, "", val.data.nvlist, strbuf, 0);
            break;
        case ORU_DO_TYPE_ARRAY:
            oru_do_vlist_to_xml_opt(prefix, "", name, val.data.vlist, strbuf, 0);
            break;
        case ORU_DO_TYPE_BITS:
            oru_do_vlist_to_xml_opt(prefix, "bits", name, val.data.vlist, strbuf, 0);
            break;
        default:
            break;
    }
}

}  // namespace

int32_t oru_do_value_to_xml(const char *prefix, const char *name, ORUDoValue *val,
                            ORUDoStrbuf *strbuf) {
    return oru_do_value_to_xml_fmt_opt(prefix, name, val, oru::default_formatter(), strbuf, 0);
}

int32_t oru_do_value_to_xml_opt(const char *prefix, const char *name, ORUDoValue *val,
                                ORUDoStrbuf *strbuf, uint32_t opts) {
    return oru_do_value_to_xml_fmt_opt(prefix, name, val, oru::default_formatter(), strbuf, opts);
}

int32_t oru_do_value_to_xml_fmt(const char *prefix, const char *name, ORUDoValue *val,
                                const ORUDoValueFormatter *formatter, ORUDoStrbuf *strbuf) {
    return oru_do_value_to_xml_fmt_opt(prefix, name, val, formatter, strbuf, 0);
}

int32_t oru_do_value_to_xml_fmt_opt(const char *prefix, const char *name, ORUDoValue *val,
                                    const ORUDoValueFormatter *formatter, ORUDoStrbuf *strbuf,
                                    uint32_t opts) {
    if (formatter != nullptr && formatter->to_xml != nullptr)
        return formatter->to_xml(formatter->context, prefix, name, val, strbuf, opts);
    ORU_REQUIRE(val);
    ORU_REQUIRE(strbuf);
    const char *tag = name != nullptr ? name : "value";
    oru::xml_begin_tag(strbuf, prefix, tag);
    if ((opts & ORU_DO_OPT_PLAIN_XML) == 0)
        add_attributes(strbuf, *val);
    oru_do_strbuf_add_char(strbuf, '>');
    add_content(strbuf, prefix, name, *val, opts);
    oru::xml_end_tag(strbuf, prefix, tag);
    return oru_do_strbuf_get_err(strbuf);
}
