// Descriptions: types, constraints, properties and resources.
#include "json/write.h"
#include "oru/constraint.h"
#include "oru/mr_meta.h"
#include "oru/name.h"
#include "oru/ntlist.h"
#include "oru/prop_meta.h"
#include "oru/typedef_meta.h"
#include "oru/value.h"

namespace {

using oru::json::Members;
using oru::json::put;
using oru::json::put_key;
using oru::json::put_raw;

void put_name(ORUDoStrbuf *buf, ORUDoName *name) {
    put_raw(buf, oru_do_name_get_strname(name));
}

// A list of objects that each have a writer.
template <class List, class Object>
void put_list(ORUDoStrbuf *buf, const char *tag, List *list, void (*iter_of)(List *, ORUDoIter *),
              Object *(*next)(ORUDoIter *), int32_t (*write)(Object *, ORUDoStrbuf *)) {
    put(buf, "{");
    put_key(buf, tag);
    put(buf, "[");
    Members members(buf);
    ORUDoIter iter;
    iter_of(list, &iter);
    while (Object *object = next(&iter)) {
        members.next();
        write(object, buf);
    }
    put(buf, "]}");
}

void put_simple_type(ORUDoStrbuf *buf, ORUDoTypedefMeta *meta) {
    put_key(buf, "simple_type");
    put_raw(buf, oru_do_get_typestr_by_typecode(oru_do_typedef_meta_get_simple_type(meta)));
    if (ORUDoConstraintList *list = oru_do_typedef_meta_get_constraint_list(meta)) {
        put(buf, ",");
        put_key(buf, "constraint_list");
        oru_do_constraint_list_to_json(list, buf);
    }
}

void put_members(ORUDoStrbuf *buf, const char *key, ORUDoNtlist *list) {
    if (list == nullptr)
        return;
    put_key(buf, key);
    oru_do_ntlist_to_json(list, buf);
}

// A kind without its part leaves the comma before it standing.
void put_kind(ORUDoStrbuf *buf, ORUDoTypedefMeta *meta) {
    switch (oru_do_typedef_meta_get_category(meta)) {
        case ORU_TYPEDEF_SIMPLE:
            put_simple_type(buf, meta);
            break;
        case ORU_TYPEDEF_ENUM:
            if (ORUDoNvlist *enums = oru_do_typedef_meta_get_enums(meta)) {
                put_key(buf, "enum");
                oru_do_nvlist_to_json(enums, buf);
            }
            break;
        case ORU_TYPEDEF_SEQUENCE:
            put_members(buf, "sequence", oru_do_typedef_meta_get_sequence_members(meta));
            break;
        case ORU_TYPEDEF_CHOICE:
            put_members(buf, "choice", oru_do_typedef_meta_get_choices(meta));
            break;
        default:
            break;
    }
}

// `,"key":number`
void put_number(ORUDoStrbuf *buf, const char *key, int64_t number) {
    put(buf, ",");
    put_key(buf, key);
    oru_do_strbuf_add_long(buf, number);
}

}  // namespace

int32_t oru_do_typedef_meta_to_json(ORUDoTypedefMeta *meta, ORUDoStrbuf *buf) {
    ORU_REQUIRE(meta);
    put(buf, "{\"%typedef_meta\":{\"name\":");
    put_name(buf, oru_do_typedef_meta_get_name(meta));
    put(buf, ",");
    put_kind(buf, meta);
    put(buf, "}}");
    return 0;
}

int32_t oru_do_ntlist_to_json(ORUDoNtlist *ntlist, ORUDoStrbuf *buf) {
    ORU_REQUIRE(ntlist);
    put(buf, "{\"%ntlist\":{");
    Members members(buf);
    ORUDoIter iter;
    oru_do_ntlist_iter(ntlist, &iter);
    while (ORUDoNtlistItem *item = oru_do_ntlist_get_next(&iter)) {
        members.next(oru_do_name_get_strname(oru_do_ntlist_item_get_name(item)));
        oru_do_typedef_meta_to_json(oru_do_ntlist_item_get_typedef(item), buf);
    }
    put(buf, "}}");
    return 0;
}

int32_t oru_do_constraint_to_json(ORUDoConstraint *constraint, ORUDoStrbuf *buf) {
    ORU_REQUIRE(constraint);
    put(buf, "{\"%constraint\":{");
    if (ORUDoCondition *condition = oru_do_constraint_get_condition(constraint)) {
        const char *expr = oru_do_condition_get_expr(condition);  // null without memory
        put_key(buf, "condition");
        oru::json::put_escaped(buf, expr != nullptr ? expr : "");
        put(buf, ",");
    }
    put_key(buf, "constraint_str");
    oru::json::put_escaped(buf, oru_do_constraint_get_str(constraint));
    put(buf, "}}");
    return 0;
}

int32_t oru_do_constraint_list_to_json(ORUDoConstraintList *list, ORUDoStrbuf *buf) {
    ORU_REQUIRE(list);
    put_list(buf, "%constraint_list", list, oru_do_constraint_list_iter,
             oru_do_constraint_list_get_next, oru_do_constraint_to_json);
    return 0;
}

int32_t oru_do_prop_meta_to_json(ORUDoPropMeta *meta, ORUDoStrbuf *buf) {
    ORU_REQUIRE(meta);
    put(buf, "{\"%prop_meta\":{\"prop_name\":");
    put_name(buf, oru_do_prop_meta_get_name(meta));
    put_number(buf, "prop_category", oru_do_prop_meta_get_category(meta));
    put_number(buf, "primary_key", oru_do_prop_meta_is_primary_key(meta));
    put_number(buf, "key_idx", oru_do_prop_meta_get_key_idx(meta));
    put_number(buf, "type_code", oru_do_prop_meta_get_typecode(meta));
    put(buf, ",\"type_name\":");
    put_name(buf, oru_do_prop_meta_get_type_name(meta));
    put_number(buf, "max_access", oru_do_prop_meta_get_max_access(meta));
    put_number(buf, "multiplicity", oru_do_prop_meta_get_multiplicity(meta));
    put_number(buf, "ref_role", oru_do_prop_meta_get_ref_role(meta));
    put(buf, "}}");
    return 0;
}

int32_t oru_do_prop_meta_list_to_json(ORUDoPropMetaList *list, ORUDoStrbuf *buf) {
    ORU_REQUIRE(list);
    put_list(buf, "%prop_meta_list", list, oru_do_prop_meta_list_iter,
             oru_do_prop_meta_list_get_next, oru_do_prop_meta_to_json);
    return 0;
}

int32_t oru_do_mr_meta_to_json(ORUDoMrMeta *meta, ORUDoStrbuf *buf) {
    ORU_REQUIRE(meta);
    put(buf, "{\"%mr_meta\":{\"pkg_name\":");
    put_name(buf, oru_do_mr_meta_get_pkg_name(meta));
    put(buf, ",\"mr_name\":");
    put_name(buf, oru_do_mr_meta_get_mr_name(meta));
    put_number(buf, "max_access", static_cast<uint8_t>(oru_do_mr_meta_get_max_access(meta)));
    put(buf, ",\"prop_meta_list\":");
    ORUDoPropMetaList *list = oru_do_prop_meta_list_new();
    // Without memory the text stays open.
    if (list != nullptr && oru_do_mr_meta_get_all_prop_meta(meta, list) >= 0) {
        oru_do_prop_meta_list_to_json(list, buf);
        put(buf, "}}");
    }
    oru_do_prop_meta_list_deref(list);
    return 0;
}

int32_t oru_do_mr_meta_list_to_json(ORUDoMrMetaList *list, ORUDoStrbuf *buf) {
    ORU_REQUIRE(list);
    put_list(buf, "%mr_meta_list", list, oru_do_mr_meta_list_iter, oru_do_mr_meta_list_get_next,
             oru_do_mr_meta_to_json);
    return 0;
}
