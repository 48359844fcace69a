// The adders that make the value: one a type, from the table of value types.
#include "do/derived_value.h"
#include "do/name.h"
#include "do/nlist.h"
#include "do/uri.h"
#include "do/value.h"
#include "do/value_types.h"
#include "oru/rc.h"
#include "oru/uri_derive.h"
#include "oru/vlist.h"

namespace {

// Adds a value and gives up the reference that came with it.
int32_t add_new(ORUDoVlist *vlist, ORUDoValue *value) {
    const auto held = oru::Ref<ORUDoValue>::adopt(value);
    return oru_do_vlist_add(vlist, held.get());
}

// Appends the collection of that name below `uri`. False when it, or a place for it, cannot be had.
bool add_child_ref(ORUDoVlist *vlist, ORUDoUri *uri, const char *ref) {
    const auto coll_uri = oru::Ref<ORUDoUri>::adopt(oru_do_uri_new_coll(uri, ref));
    return coll_uri && oru_do_vlist_add_coll_uri(vlist, coll_uri.get()) != -1;
}

}  // namespace

int32_t oru_do_vlist_add_null(ORUDoVlist *vlist) {
    return add_new(vlist, oru_do_value_new_null());
}

#define ADD(SHAPE, suffix, CODE, text, Type)                                               \
    int32_t oru_do_vlist_add_##suffix(ORUDoVlist *vlist, ORU_VALUE_PARAMS_##SHAPE(Type)) { \
        return add_new(vlist, oru_do_value_new_##suffix(ORU_VALUE_ARGS_##SHAPE));          \
    }
ORU_LISTED_VALUE_TYPES(ADD)

int32_t oru_do_vlist_add_string_l(ORUDoVlist *vlist, const char *text, int32_t n) {
    return add_new(vlist, oru_do_value_new_string_l(text, n));
}

int32_t oru_do_vlist_add_hex_binary_typedef(ORUDoVlist *vlist, const void *bytes, int32_t n,
                                            const char *type_name) {
    return add_new(vlist, oru::new_derived_hex_binary(bytes, n, type_name));
}

int32_t oru_do_vlist_add_child_ref_names(ORUDoVlist *vlist, ORUDoUri *uri, ORUDoNlist *nlist) {
    if (vlist == nullptr || uri == nullptr || nlist == nullptr)
        return ORU_RC_GENERAL;
    const bool complete = oru::chain(*nlist).each(
        [=](const ORUDoNlistItem &item) { return add_child_ref(vlist, uri, item.name->str); });
    return complete ? ORU_OK : ORU_RC_MALLOC;
}
