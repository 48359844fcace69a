// The text forms of lists and property tables.
#include "do/name.h"
#include "do/nlist.h"
#include "do/ntlist.h"
#include "do/nvlist.h"
#include "do/print.h"
#include "do/properties.h"
#include "do/properties_list.h"
#include "do/vlist.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace {

using oru::print_separated;

using PrintValue = int32_t(ORUDoValue *, int32_t, ORUDoStrbuf *);

void print_pair(const char *name, ORUDoValue *value, ORUDoStrbuf *strbuf, PrintValue *print_value) {
    oru_do_strbuf_add_string(strbuf, name);
    oru_do_strbuf_add_string(strbuf, " : ");
    print_value(value, 0, strbuf);
}

int32_t print_vlist(ORUDoVlist *vlist, int32_t tabs, ORUDoStrbuf *strbuf, PrintValue *print_value) {
    if (vlist == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru_do_strbuf_add_string(strbuf, "[\n");
    print_separated(vlist->first, ",\n", strbuf,
                    [=](const ORUDoVlistItem &item) { print_value(item.value, tabs + 1, strbuf); });
    if (vlist->first != nullptr)
        oru_do_strbuf_add_char(strbuf, '\n');
    oru_do_strbuf_add_string(strbuf, "]\n");
    return ORU_OK;
}

int32_t print_property(ORUDoProperty *property, int32_t tabs, ORUDoStrbuf *strbuf,
                       PrintValue *print_value) {
    if (property == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_tab(strbuf, tabs);
    print_pair(property->name->str, property->value, strbuf, print_value);
    return ORU_OK;
}

int32_t print_properties(ORUDoProperties *props, ORUDoStrbuf *strbuf, PrintValue *print_value) {
    if (props == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_string(strbuf, "{ ");
    print_separated(props->first, ", ", strbuf, [=](const ORUDoProperty &entry) {
        print_pair(entry.name->str, entry.value, strbuf, print_value);
    });
    oru_do_strbuf_add_string(strbuf, " }");
    return ORU_OK;
}

}  // namespace

int32_t oru_do_nvlist_to_strbuf(ORUDoNvlist *nvlist, int32_t, ORUDoStrbuf *strbuf) {
    if (nvlist == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_char(strbuf, '{');
    print_separated(nvlist->first, ", ", strbuf, [strbuf](const ORUDoNvlistItem &item) {
        print_pair(item.name, item.value, strbuf, oru_do_value_to_strbuf);
    });
    oru_do_strbuf_add_char(strbuf, '}');
    return ORU_OK;
}

int32_t oru_do_vlist_to_strbuf(ORUDoVlist *vlist, int32_t tabs, ORUDoStrbuf *strbuf) {
    return print_vlist(vlist, tabs, strbuf, oru_do_value_to_strbuf);
}

int32_t oru_do_vlist_to_strbuf_with_defaults(ORUDoVlist *vlist, int32_t tabs, ORUDoStrbuf *strbuf) {
    return print_vlist(vlist, tabs, strbuf, oru_do_value_to_strbuf_with_defaults);
}

int32_t oru_do_nlist_to_strbuf(ORUDoNlist *nlist, int32_t tabs, ORUDoStrbuf *strbuf) {
    if (nlist == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru_do_strbuf_add_char(strbuf, '[');
    print_separated(nlist->first, ", ", strbuf, [strbuf](const ORUDoNlistItem &item) {
        oru_do_strbuf_add_string(strbuf, item.name->str);
    });
    oru_do_strbuf_add_string(strbuf, "]\n");
    return ORU_OK;
}

int32_t oru_do_ntlist_to_strbuf(ORUDoNtlist *ntlist, int32_t, ORUDoStrbuf *strbuf) {
    if (ntlist == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_string(strbuf, "[\n");
    print_separated(ntlist->first, ",\n", strbuf, [strbuf](const ORUDoNtlistItem &item) {
        oru_do_strbuf_add_string(strbuf, item.name->str);
        oru_do_strbuf_add_char(strbuf, ' ');
        oru_do_strbuf_add_long(strbuf, item.type_code);
    });
    oru_do_strbuf_add_string(strbuf, "]\n");
    return ORU_OK;
}

int32_t oru_do_property_to_strbuf(ORUDoProperty *property, int32_t tabs, ORUDoStrbuf *strbuf) {
    return print_property(property, tabs, strbuf, oru_do_value_to_strbuf);
}

int32_t oru_do_property_to_strbuf_with_defaults(ORUDoProperty *property, int32_t tabs,
                                                ORUDoStrbuf *strbuf) {
    return print_property(property, tabs, strbuf, oru_do_value_to_strbuf_with_defaults);
}

int32_t oru_do_properties_to_strbuf(ORUDoProperties *props, int32_t, ORUDoStrbuf *strbuf) {
    return print_properties(props, strbuf, oru_do_value_to_strbuf);
}

int32_t oru_do_properties_to_strbuf_with_defaults(ORUDoProperties *props, int32_t,
                                                  ORUDoStrbuf *strbuf) {
    return print_properties(props, strbuf, oru_do_value_to_strbuf_with_defaults);
}

int32_t oru_do_properties_list_to_strbuf(ORUDoPropertiesList *properties_list, int32_t tabs,
                                         ORUDoStrbuf *strbuf) {
    if (properties_list == nullptr || properties_list->first == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_char(strbuf, '[');
    print_separated(properties_list->first, ", ", strbuf, [=](const ORUDoPropertiesListItem &item) {
        oru_do_properties_to_strbuf(item.properties, tabs, strbuf);
    });
    oru_do_strbuf_add_char(strbuf, ']');
    return ORU_OK;
}

void oru_do_vlist_trace(ORUDoVlist *vlist, uint32_t level) {
    ORU_REQUIRE(vlist);
    oru::trace_text<oru_do_vlist_to_strbuf>(vlist, level);
}

void oru_do_properties_list_trace(ORUDoPropertiesList *list, uint32_t level) {
    ORU_REQUIRE(list);
    if (oru_logger_get_level() >= level) {
        oru::log_text<oru_do_properties_list_to_strbuf>(
            list, [level](const char *text) { _oru_log(level, "%s\n", text); });
    }
}
