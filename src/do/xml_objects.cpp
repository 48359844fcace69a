// The XML forms of property tables, value tables, errors, data trees and events.
#include "do/dtree.h"
#include "do/error.h"
#include "do/event.h"
#include "do/name.h"
#include "do/prop_errs.h"
#include "do/properties.h"
#include "do/properties_list.h"
#include "do/vtable.h"
#include "do/xml.h"
#include "oru/error.h"
#include "oru/rc.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/xml.h"

namespace {

// An element around what is written while it lives.
class Element {
  public:
    Element(ORUDoStrbuf *strbuf, const char *prefix, const char *name)
        : strbuf_(strbuf), prefix_(prefix), name_(name) {
        oru::xml_begin_tag(strbuf, prefix, name);
        oru_do_strbuf_add_char(strbuf, '>');
    }
    Element(const Element &) = delete;
    Element &operator=(const Element &) = delete;
    ~Element() { oru::xml_end_tag(strbuf_, prefix_, name_); }

  private:
    ORUDoStrbuf *strbuf_;
    const char *prefix_;
    const char *name_;
};

const char *name_or(const char *wrapper, const char *kind) {
    return wrapper != nullptr ? wrapper : kind;
}

void put_property(const char *prefix, const ORUDoProperty &entry, ORUDoStrbuf *strbuf,
                  uint32_t opts) {
    oru_do_value_to_xml_opt(prefix, oru_do_name_get_strname(entry.name), entry.value, strbuf, opts);
}

void put_line(int32_t tabs, ORUDoStrbuf *strbuf) {
    oru_do_strbuf_add_char(strbuf, '\n');
    oru_do_strbuf_add_tab(strbuf, tabs);
}

// What a node holds, its own element left out.
void put_content(int32_t indent, const char *prefix, const char *err_prefix, ORUDoDtree *node,
                 ORUDoStrbuf *strbuf, uint32_t opts) {
    if (node->error != nullptr)
        oru_do_error_to_xml(err_prefix, node->error, strbuf);
    const ORUDoProperty *entry = node->properties != nullptr ? node->properties->first : nullptr;
    for (; entry != nullptr; entry = entry->next) {
        if (entry->value == nullptr)
            continue;
        put_line(indent, strbuf);  // the line feed comes without a layout too
        put_property(prefix, *entry, strbuf, opts);
    }
    ORUDoIter iter;
    oru_do_dtree_child_iter(node, &iter);
    while (ORUDoDtree *child = oru_do_dtree_get_next_child(&iter))
        oru_do_dtree_to_xml_opt(indent, prefix, err_prefix, child, strbuf, opts);
}

}  // namespace

int32_t oru_do_properties_to_xml(const char *prefix, const char *wrapper, ORUDoProperties *props,
                                 ORUDoStrbuf *strbuf) {
    return oru_do_properties_to_xml_opt(prefix, wrapper, props, strbuf, 0);
}

int32_t oru_do_properties_to_xml_opt(const char *prefix, const char *wrapper,
                                     ORUDoProperties *props, ORUDoStrbuf *strbuf, uint32_t opts) {
    ORU_REQUIRE(props);
    ORU_REQUIRE(strbuf);
    const Element element(strbuf, prefix, name_or(wrapper, "properties"));
    for (const ORUDoProperty *entry = props->first; entry != nullptr; entry = entry->next) {
        if (entry->value != nullptr)
            put_property(prefix, *entry, strbuf, opts);
    }
    return ORU_OK;
}

int32_t oru_do_properties_list_to_xml(const char *prefix, const char *wrapper,
                                      ORUDoPropertiesList *list, ORUDoStrbuf *strbuf) {
    return oru_do_properties_list_to_xml_opt(prefix, wrapper, list, strbuf, 0);
}

int32_t oru_do_properties_list_to_xml_opt(const char *prefix, const char *wrapper,
                                          ORUDoPropertiesList *list, ORUDoStrbuf *strbuf,
                                          uint32_t opts) {
    ORU_REQUIRE(list);
    ORU_REQUIRE(strbuf);
    const Element element(strbuf, prefix, name_or(wrapper, "properties_list"));
    for (const auto *item = list->first; item != nullptr; item = item->next)
        oru_do_properties_to_xml_opt(prefix, nullptr, item->properties, strbuf, opts);
    return ORU_OK;
}

int32_t oru_do_vtable_to_xml(const char *prefix, const char *wrapper, ORUDoVtable *vtable,
                             ORUDoStrbuf *strbuf) {
    return oru_do_vtable_to_xml_opt(prefix, wrapper, vtable, strbuf, 0);
}

int32_t oru_do_vtable_to_xml_opt(const char *prefix, const char *wrapper, ORUDoVtable *vtable,
                                 ORUDoStrbuf *strbuf, uint32_t opts) {
    ORU_REQUIRE(vtable);
    ORU_REQUIRE(strbuf);
    const Element element(strbuf, prefix, name_or(wrapper, "vtable"));
    for (const ORUDoVtableItem *item = vtable->first; item != nullptr; item = item->next)
        oru_do_vlist_to_xml_opt(prefix, nullptr, nullptr, item->row, strbuf, opts);
    return ORU_OK;
}

int32_t oru_do_error_to_xml(const char *prefix, ORUDoError *err, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(err);
    ORU_REQUIRE(strbuf);
    oru::xml_begin_tag(strbuf, prefix, "error");
    oru::xml_attribute(strbuf, "namespace", oru_do_error_get_namespace(err));
    oru_do_strbuf_add_char(strbuf, '>');
    {
        const Element code(strbuf, prefix, "code");
        oru_do_strbuf_add_long(strbuf, oru_do_error_get_code(err));
    }
    {
        const Element message(strbuf, prefix, "message");
        oru_do_strbuf_add_string_encode_for_xml(strbuf, oru_do_error_get_msg(err));
    }
    if (ORUDoError *inner = oru_do_error_get_cause(err)) {
        const Element cause(strbuf, prefix, "cause");
        oru_do_error_to_xml(prefix, inner, strbuf);
    }
    if (ORUDoPropErrs *inner = oru_do_error_get_prop_errs(err)) {
        const Element prop_errs(strbuf, prefix, "prop_errs");
        oru_do_prop_errs_to_xml(prefix, inner, strbuf);
    }
    oru::xml_end_tag(strbuf, prefix, "error");
    return ORU_OK;
}

int32_t oru_do_prop_errs_to_xml(const char *prefix, ORUDoPropErrs *prop_errs, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(prop_errs);
    ORU_REQUIRE(strbuf);
    const Element element(strbuf, prefix, "prop_errs");
    for (const ORUDoPropErr *entry = prop_errs->head; entry != nullptr; entry = entry->next) {
        const Element prop_err(strbuf, prefix, "prop_err");
        {
            const Element property(strbuf, prefix, "property");
            oru_do_strbuf_add_string(strbuf, oru_do_name_get_strname(entry->name));
        }
        const Element error(strbuf, prefix, "error");
        oru_do_error_to_xml(prefix, entry->err, strbuf);
    }
    return ORU_OK;
}

int32_t oru_do_dtree_to_xml(const char *prefix, const char *err_prefix, ORUDoDtree *dtree,
                            ORUDoStrbuf *strbuf) {
    return oru_do_dtree_to_xml_opt(-1, prefix, err_prefix, dtree, strbuf, 0);
}

int32_t oru_do_dtree_to_xml_tab(int32_t indent, const char *prefix, const char *err_prefix,
                                ORUDoDtree *dtree, ORUDoStrbuf *strbuf) {
    return oru_do_dtree_to_xml_opt(indent, prefix, err_prefix, dtree, strbuf, 0);
}

int32_t oru_do_dtree_to_xml_opt(int32_t indent, const char *prefix, const char *err_prefix,
                                ORUDoDtree *dtree, ORUDoStrbuf *strbuf, uint32_t opts) {
    ORU_REQUIRE(dtree);
    ORU_REQUIRE(strbuf);
    const char *name = oru_do_name_get_strname(dtree->name);
    if (*name == '\0') {
        put_content(indent, prefix, err_prefix, dtree, strbuf, opts);
        return ORU_OK;
    }
    if (indent >= 0)
        put_line(indent, strbuf);
    oru::xml_begin_tag(strbuf, prefix, name);
    if (ORUDoUri *uri = oru_do_dtree_get_mr_uri(dtree))
        oru::xml_attribute(strbuf, "uri", oru_do_uri_get_uri_str(uri));
    oru_do_strbuf_add_char(strbuf, '>');
    put_content(indent >= 0 ? indent + 1 : -1, prefix, err_prefix, dtree, strbuf, opts);
    if (indent >= 0)
        put_line(indent, strbuf);
    oru::xml_end_tag(strbuf, prefix, name);
    return ORU_OK;
}

int32_t oru_do_event_to_xml(const char *prefix, const char *wrapper, ORUDoEvent *event,
                            ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(event);
    ORU_REQUIRE(strbuf);
    const Element element(strbuf, prefix, name_or(wrapper, "event"));
    {
        const Element name(strbuf, prefix, "name");
        oru_do_strbuf_add_string(strbuf, oru_do_name_get_strname(event->name));
    }
    {
        const Element uri(strbuf, prefix, "uri");
        oru_do_uri_to_strbuf(event->uri, 0, strbuf);
    }
    {
        const Element time(strbuf, prefix, "time");
        oru_do_strbuf_add_long(strbuf, event->event_time);
    }
    {
        const Element severity(strbuf, prefix, "severity");
        oru_do_strbuf_add_long(strbuf, event->severity);
    }
    const Element info(strbuf, prefix, "info");
    if (event->info != nullptr)
        oru_do_properties_to_xml(prefix, nullptr, event->info, strbuf);
    return ORU_OK;
}
