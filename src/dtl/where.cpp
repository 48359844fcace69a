// The where clause of one cursor: a document's clause with the variables in place.
#include <cstring>
#include <string_view>

#include "do/strbuf.h"
#include "dtl/variables.h"
#include "oru/nvlist.h"

namespace oru::dtl {
namespace {

using ValueRef = Ref<ORUDoValue>;

struct Where {
    ORUDoNvlist *params;
    ORUDoDtree *node;
    ORUDoDtree *root;

    ValueRef resolve(const char *text, ORUDoValue *fallback) const {
        return dtl::resolve(params, text, fallback, node, root);
    }
};

// An inner list that cannot be had leaves the value as it is.
ValueRef resolve_sequence(const Where &where, ORUDoValue *value) {
    int32_t rc = 0;
    ORUDoNvlist *inner = oru_do_value_get_sequence(value, &rc);
    if (rc != 0 || inner == nullptr)
        return ValueRef::share(value);
    const auto resolved = resolve_where(inner, where.params, where.node, where.root);
    if (!resolved)
        return ValueRef::share(value);
    return ValueRef::adopt(oru_do_value_new_sequence(resolved.get()));
}

ValueRef resolve_value(const Where &where, ORUDoValue *value) {
    if (oru_do_value_get_type(value) == ORU_DO_TYPE_SEQUENCE)
        return resolve_sequence(where, value);
    if (const char *text = variable_text(value))
        return where.resolve(text, value);
    return ValueRef::share(value);
}

// An order against nothing selects nothing that can be told.
bool compares_with_nothing(const char *name, ORUDoValue *value) {
    return oru_do_value_is_null(value) != 0 && std::strpbrk(name, "<>") != nullptr;
}

// "vrf $v" with a `v` of "red" is "vrf red"; an item whose variable has no text is dropped.
void add_with_variable(const Where &where, ORUDoNvlist &out, const char *name, const char *variable,
                       ORUDoValue *value) {
    const ValueRef ending = where.resolve(variable, nullptr);
    int32_t rc = 0;
    const char *text = ending ? oru_do_value_get_string(ending.get(), &rc) : nullptr;
    if (text == nullptr || *text == '\0')
        return;
    const auto full = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!full)
        return;
    strbuf_append(*full, {name, static_cast<size_t>(variable - name)});
    if (strbuf_append(*full, text))
        oru_do_nvlist_add(&out, oru_do_strbuf_to_string(full.get()), value);
}

void add_resolved(const Where &where, ORUDoNvlist &out, const ORUDoNvlistItem &item) {
    const ValueRef value = resolve_value(where, item.value);
    if (!value || compares_with_nothing(item.name, value.get()))
        return;
    if (const char *variable = std::strchr(item.name, '$')) {
        add_with_variable(where, out, item.name, variable, value.get());
    } else {
        oru_do_nvlist_add(&out, item.name, value.get());
    }
}

}  // namespace

Ref<ORUDoNvlist> resolve_where(ORUDoNvlist *where, ORUDoNvlist *params, ORUDoDtree *node,
                               ORUDoDtree *root) {
    auto out = Ref<ORUDoNvlist>::adopt(oru_do_nvlist_new());
    if (!out)
        return out;
    const Where context{params, node, root};
    for (const ORUDoNvlistItem *item = where->first; item != nullptr; item = item->next)
        add_resolved(context, *out, *item);
    return out;
}

}  // namespace oru::dtl
