// The XML forms of containers, on top of that of values.
#include "do/xml.h"

#include "do/nvlist.h"
#include "do/vlist.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/xml.h"

namespace {

// An element that may be left out: no wrapper means the name of the kind, an empty one no element.
struct Wrapper {
    const char *name;
    bool written;

    Wrapper(const char *wrapper, const char *kind)
        : name(wrapper != nullptr ? wrapper : kind), written(*name != '\0') {}
};

}  // namespace

void oru::xml_begin_tag(ORUDoStrbuf *strbuf, const char *prefix, const char *name) {
    oru_do_strbuf_add_char(strbuf, '<');
    if (prefix != nullptr)
        oru_do_strbuf_add_string(strbuf, prefix);
    oru_do_strbuf_add_string(strbuf, name);
}

void oru::xml_attribute(ORUDoStrbuf *strbuf, const char *name, const char *text) {
    if (text == nullptr)
        return;
    oru_do_strbuf_add_char(strbuf, ' ');
    oru_do_strbuf_add_string(strbuf, name);
    oru_do_strbuf_add_string(strbuf, "=\"");
    oru_do_strbuf_add_string_encode_for_xml(strbuf, text);
    oru_do_strbuf_add_char(strbuf, '"');
}

void oru::xml_end_tag(ORUDoStrbuf *strbuf, const char *prefix, const char *name) {
    oru_do_strbuf_add_string(strbuf, "</");
    if (prefix != nullptr)
        oru_do_strbuf_add_string(strbuf, prefix);
    oru_do_strbuf_add_string(strbuf, name);
    oru_do_strbuf_add_char(strbuf, '>');
}

int32_t oru_do_vlist_to_xml(const char *prefix, const char *wrapper, const char *item_name,
                            ORUDoVlist *vlist, ORUDoStrbuf *strbuf) {
    return oru_do_vlist_to_xml_opt(prefix, wrapper, item_name, vlist, strbuf, 0);
}

int32_t oru_do_vlist_to_xml_opt(const char *prefix, const char *wrapper, const char *item_name,
                                ORUDoVlist *vlist, ORUDoStrbuf *strbuf, uint32_t opts) {
    ORU_REQUIRE(vlist);
    ORU_REQUIRE(strbuf);
    const Wrapper element(wrapper, "vlist");
    if (element.written) {
        oru::xml_begin_tag(strbuf, prefix, element.name);
        const int32_t type = oru_do_vlist_get_member_type(vlist);
        // This attribute does not go with those that plain elements leave out.
        if (wrapper == nullptr && type != ORU_DO_TYPE_UNKNOWN)
            oru::xml_attribute(strbuf, "type", oru_do_get_typestr_by_typecode(type));
        oru_do_strbuf_add_char(strbuf, '>');
    }
    for (const auto *item = vlist->first; item != nullptr; item = item->next)
        oru_do_value_to_xml_opt(prefix, item_name, item->value, strbuf, opts);
    if (element.written)
        oru::xml_end_tag(strbuf, prefix, element.name);
    return ORU_OK;
}

int32_t oru_do_nvlist_to_xml(const char *prefix, const char *wrapper, ORUDoNvlist *nvlist,
                             ORUDoStrbuf *strbuf) {
    return oru_do_nvlist_to_xml_opt(prefix, wrapper, nvlist, strbuf, 0);
}

int32_t oru_do_nvlist_to_xml_opt(const char *prefix, const char *wrapper, ORUDoNvlist *nvlist,
                                 ORUDoStrbuf *strbuf, uint32_t opts) {
    ORU_REQUIRE(nvlist);
    ORU_REQUIRE(strbuf);
    const Wrapper element(wrapper, "nvlist");
    if (element.written) {
        oru::xml_begin_tag(strbuf, prefix, element.name);
        oru_do_strbuf_add_char(strbuf, '>');
    }
    for (const auto *item = nvlist->first; item != nullptr; item = item->next)
        oru_do_value_to_xml_opt(prefix, item->name, item->value, strbuf, opts);
    if (element.written)
        oru::xml_end_tag(strbuf, prefix, element.name);
    return ORU_OK;
}
