#include "do/vlist.h"
#include "do/vtable.h"
#include "json/types.h"
#include "json/write.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace {

using oru::json::Members;
using oru::json::put;

void put_values(ORUDoStrbuf *buf, ORUDoVlist *vlist, uint32_t options) {
    Members members(buf);
    for (const ORUDoVlistItem *item = vlist->first; item != nullptr; item = item->next) {
        members.next();
        oru::json::put_value(buf, *item->value, options);
    }
}

// The type under whose tag the whole list can be written, or null.
const oru_json_type_info *shared_type(ORUDoVlist *vlist, uint32_t options) {
    if ((options & (ORU_JSON_OPT_VLIST | ORU_JSON_OPT_BITS)) != 0)
        return nullptr;
    const int32_t type = oru_do_vlist_get_member_type(vlist);
    if (type == ORU_DO_TYPE_UNKNOWN || oru_do_is_complex_type(type) != 0)
        return nullptr;
    return oru_json_get_type_info_by_value_type_code(type);
}

const char *tag_by_options(uint32_t options) {
    if ((options & ORU_JSON_OPT_VLIST) != 0)
        return "%vlist";
    return (options & ORU_JSON_OPT_BITS) != 0 ? "%bits" : "%array";
}

}  // namespace

int32_t oru_do_vlist_to_json(ORUDoVlist *vlist, ORUDoStrbuf *buf) {
    return oru_do_vlist_to_json_opt(vlist, buf, ORU_JSON_OPT_VLIST, nullptr);
}

int32_t oru_do_vlist_to_json_opt(ORUDoVlist *vlist, ORUDoStrbuf *buf, uint32_t options,
                                 const char *typedef_name) {
    ORU_REQUIRE(vlist);
    const oru_json_type_info *type = shared_type(vlist, options);
    const bool bare = type != nullptr && (options & ORU_JSON_OPT_COMPACT) != 0;
    if (!bare) {
        put(buf, "{");
        oru::json::put_key(buf, type != nullptr ? type->tag : tag_by_options(options));
    }
    put(buf, "[");
    put_values(buf, vlist, type != nullptr ? ORU_JSON_OPT_COMPACT : options);
    put(buf, "]");
    if (!bare) {
        oru::json::put_typedef(buf, typedef_name);
        put(buf, "}");
    }
    return 0;
}

int32_t oru_do_nlist_to_json(ORUDoNlist *nlist, ORUDoStrbuf *buf) {
    ORU_REQUIRE(nlist);
    put(buf, "{\"%nlist\":[");
    Members members(buf);
    ORUDoIter iter;
    oru_do_nlist_iter(nlist, &iter);
    while (ORUDoName *name = oru_do_nlist_get_next(&iter)) {
        members.next();
        oru::json::put_raw(buf, oru_do_name_get_strname(name));
    }
    put(buf, "]}");
    return 0;
}

int32_t oru_do_vtable_to_json(ORUDoVtable *vtable, ORUDoStrbuf *buf) {
    return oru_do_vtable_to_json_opt(vtable, buf, 0);
}

int32_t oru_do_vtable_to_json_opt(ORUDoVtable *vtable, ORUDoStrbuf *buf, uint32_t options) {
    ORU_REQUIRE(vtable);
    put(buf, "{\"%vtable\":[");
    Members members(buf);
    for (const ORUDoVtableItem *item = vtable->first; item != nullptr; item = item->next) {
        members.next();
        // Only the first row follows the options: readers take its form for the table's.
        oru_do_vlist_to_json_opt(item->row, buf,
                                 item == vtable->first ? options : ORU_JSON_OPT_COMPACT, nullptr);
    }
    put(buf, "]}");
    return 0;
}
