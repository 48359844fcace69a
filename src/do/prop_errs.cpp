#include "do/prop_errs.h"

#include <cstring>

#include "do/error.h"
#include "do/name.h"
#include "frame/iter.h"
#include "oru/strbuf.h"

namespace {

void release_entry(ORUDoPropErr *entry) {
    oru::deref(entry->name);
    oru::deref(entry->err);
    oru::free_element(entry);
}

// The link to the entry of a name; the empty link at the end when there is none.
ORUDoPropErr **find_link(ORUDoPropErrs &prop_errs, const char *name) {
    ORUDoPropErr **link = &prop_errs.head;
    while (*link != nullptr && std::strcmp(oru::name_text((*link)->name), name) != 0)
        link = &(*link)->next;
    return link;
}

ORUDoError *find_err(ORUDoPropErrs &prop_errs, const char *name) {
    const ORUDoPropErr *entry = *find_link(prop_errs, name);
    return entry != nullptr ? entry->err : nullptr;
}

}  // namespace

void oru::ObjectType<ORUDoPropErrs>::release_members(ORUDoPropErrs &self) {
    oru_do_prop_errs_clear(&self);
}

ORUDoPropErrs *oru_do_prop_errs_new() {
    return oru::make<ORUDoPropErrs>();
}

void oru_do_prop_errs_set_err(ORUDoPropErrs *prop_errs, ORUDoName *name, ORUDoError *err) {
    ORU_REQUIRE(prop_errs);
    ORU_REQUIRE(name);
    ORU_REQUIRE(err);
    ORUDoPropErr *&link = *find_link(*prop_errs, oru::name_text(name));
    if (link == nullptr) {
        link = oru::make_element<ORUDoPropErr>();
        if (link == nullptr)
            return;
        link->name = oru::ref(name);
    }
    oru::replace(link->err, err);
}

ORUDoError *oru_do_prop_errs_get_err(ORUDoPropErrs *prop_errs, ORUDoName *name) {
    ORU_REQUIRE(prop_errs);
    ORU_REQUIRE(name);
    return find_err(*prop_errs, oru::name_text(name));
}

ORUDoError *oru_do_prop_errs_get_err_w_strname(ORUDoPropErrs *prop_errs, const char *name) {
    ORU_REQUIRE(prop_errs);
    ORU_REQUIRE(name);
    return find_err(*prop_errs, name);
}

void oru_do_prop_errs_clear(ORUDoPropErrs *prop_errs) {
    ORU_REQUIRE(prop_errs);
    ORUDoPropErr *entry = std::exchange(prop_errs->head, nullptr);
    while (entry != nullptr)
        release_entry(std::exchange(entry, entry->next));
}

void oru_do_prop_errs_iter(ORUDoPropErrs *prop_errs, ORUDoIter *iter) {
    ORU_REQUIRE(prop_errs);
    oru::iter_bind(iter, DO_COLL_PROP_ERRS, prop_errs, prop_errs->head);
}

int32_t oru_do_prop_errs_has_next(ORUDoIter *iter) {
    return ORU_ITER_HAS_NEXT(iter, DO_COLL_PROP_ERRS);
}

ORUDoPropErr *oru_do_prop_errs_get_next(ORUDoIter *iter) {
    return oru::iter_advance<ORUDoPropErr>(iter);
}

ORUDoName *oru_do_prop_err_get_name(ORUDoPropErr *prop_err) {
    ORU_REQUIRE(prop_err);
    return prop_err->name;
}

ORUDoError *oru_do_prop_err_get_err(ORUDoPropErr *prop_err) {
    ORU_REQUIRE(prop_err);
    return prop_err->err;
}

void oru_do_prop_err_set_name(ORUDoPropErr *prop_err, ORUDoName *name) {
    ORU_REQUIRE(prop_err);
    if (name != nullptr)
        oru::replace(prop_err->name, name);
}

int32_t oru_do_prop_errs_to_strbuf(ORUDoPropErrs *prop_errs, int32_t tabs, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(strbuf);
    if (prop_errs == nullptr)
        return 0;
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru_do_strbuf_add_string(strbuf, "{\n");
    for (const ORUDoPropErr *entry = prop_errs->head; entry != nullptr; entry = entry->next) {
        if (entry != prop_errs->head)
            oru_do_strbuf_add_string(strbuf, ", ");
        oru_do_strbuf_add_tab(strbuf, tabs + 1);
        oru_do_strbuf_add_string(strbuf, oru::name_text(entry->name));
        oru_do_strbuf_add_string(strbuf, " : ");
        oru_do_error_to_strbuf(entry->err, 0, strbuf);
    }
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru_do_strbuf_add_string(strbuf, "}\n");
    return 0;
}

ORU_OBJECT_API(ORUDoPropErrs, oru_do_prop_errs)
