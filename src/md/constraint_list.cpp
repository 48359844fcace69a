// Lists of constraints: the first that applies decides.
#include <algorithm>

#include "do/nlist.h"
#include "do/print.h"
#include "md/constraint.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/rc.h"

namespace {

void list_text(ORUDoConstraintList *list, int32_t, ORUDoStrbuf *strbuf) {
    oru_do_constraint_list_to_strbuf(list, strbuf);
}

// Null when memory runs out.
ORUDoNlist *ensure_nlist(ORUDoNlist *&nlist) {
    if (nlist == nullptr)
        nlist = oru_do_nlist_new();
    return nlist;
}

int32_t add_new_name(ORUDoNlist *&nlist, ORUDoName *name) {
    if (nlist != nullptr && oru_do_nlist_index_of(nlist, oru_do_name_get_strname(name)) >= 0)
        return ORU_OK;
    const bool added = ensure_nlist(nlist) != nullptr && oru_do_nlist_add(nlist, name) > 0;
    return added ? ORU_OK : ORU_RC_MALLOC;
}

int32_t add_new_names(ORUDoNlist *&nlist, const ORUDoNlist &names) {
    for (auto *item = names.first; item != nullptr; item = item->next) {
        if (const int32_t code = add_new_name(nlist, item->name); code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

}  // namespace

int32_t oru_do_constraint_list_add(ORUDoConstraintList *list, ORUDoConstraint *constraint) {
    return list != nullptr ? oru::meta_list_append(*list, constraint) : -1;
}

int32_t oru_do_constraint_list_get_len(ORUDoConstraintList *list) {
    return list != nullptr ? static_cast<int32_t>(list->count) : -1;
}

ORUDoConstraint *oru_do_constraint_list_get_constraint(ORUDoConstraintList *list, int32_t index) {
    ORU_REQUIRE(list);
    return oru::meta_list_at(*list, index);
}

ORUDoConstraint *oru_do_constraint_list_get_constraint_unconditional(ORUDoConstraintList *list) {
    ORU_REQUIRE(list);
    return oru::meta_list_find(
        *list, [](const ORUDoConstraint &constraint) { return constraint.condition == nullptr; });
}

ORUDoConstraint *oru_do_constraint_list_appl_constraint(ORUDoConstraintList *list, ORUDoName *name,
                                                        ORUDoProperties *props) {
    ORU_REQUIRE(list);
    return oru::meta_list_find(*list, [=](ORUDoConstraint &constraint) {
        return oru_do_constraint_is_applicable(&constraint, name, props) != 0;
    });
}

ORUDoValue *oru_do_constraint_list_get_default(ORUDoConstraintList *list, ORUDoName *name,
                                               ORUDoProperties *props) {
    ORU_REQUIRE(list);
    auto *constraint = oru::meta_list_find(*list, [=](ORUDoConstraint &each) {
        return oru_do_constraint_get_default(&each, name, props) != nullptr;
    });
    return constraint != nullptr ? constraint->default_value : nullptr;
}

int32_t oru_do_constraint_list_get_default_type(ORUDoConstraintList *list) {
    ORU_REQUIRE(list);
    int32_t type = ORU_CONSTRAINT_NO_DEFAULT;
    for (auto *item = list->first; item != nullptr; item = item->next)
        type = std::max(type, oru_do_constraint_get_type(item->object));
    return type;
}

int32_t oru_do_constraint_list_has_size_constraint(ORUDoConstraintList *list) {
    ORU_REQUIRE(list);
    return oru::meta_list_find(*list, [](const ORUDoConstraint &constraint) {
               return constraint.size != nullptr;
           }) != nullptr;
}

int32_t oru_do_constraint_list_get_cond_prop_names(ORUDoConstraintList *list, int32_t kind,
                                                   ORUDoNlist **nlist) {
    ORU_REQUIRE(list);
    ORU_REQUIRE(nlist);
    for (auto *item = list->first; item != nullptr; item = item->next) {
        auto *condition = item->object->condition;
        if (condition == nullptr || oru_do_constraint_get_type(item->object) != kind)
            continue;
        const int32_t code = add_new_names(*nlist, *condition->ext_prop_names);
        if (code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

int32_t oru_do_constraint_list_eval(ORUDoConstraintList *list, ORUDoName *name, ORUDoValue *value,
                                    ORUDoProperties *props) {
    for (auto *item = list != nullptr ? list->first : nullptr; item != nullptr; item = item->next) {
        const int32_t code = oru_do_constraint_eval(item->object, name, value, props);
        if (code != ORU_RC_CONSTRAINT_NOT_APPLICABLE)
            return code;
    }
    return ORU_OK;
}

void oru_do_constraint_list_set_typedef_meta(ORUDoConstraintList *list,
                                             ORUDoTypedefMeta *typedef_meta,
                                             ORUDoEnumResolver resolver) {
    for (auto *item = list != nullptr ? list->first : nullptr; item != nullptr; item = item->next)
        oru_do_constraint_set_typedef_meta(item->object, typedef_meta, resolver);
}

void oru_do_constraint_list_to_strbuf(ORUDoConstraintList *list, ORUDoStrbuf *strbuf) {
    for (auto *item = list != nullptr ? list->first : nullptr; item != nullptr; item = item->next)
        oru_do_constraint_to_strbuf(item->object, strbuf);
}

int32_t oru_do_print_constraint_list(FILE *stream, int32_t tabs, ORUDoConstraintList *list) {
    return oru::print_object<list_text>(stream, tabs, list);
}

ORU_META_LIST_API(ORUDoConstraintList, ORUDoConstraint, oru_do_constraint_list,
                  DO_COLL_MR_META_LIST)
