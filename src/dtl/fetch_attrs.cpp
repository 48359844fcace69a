// Which attributes are read.
#include <cstring>

#include "do/error.h"
#include "do/name.h"
#include "do/strbuf.h"
#include "dtl/fetch.h"
#include "dtl/variables.h"
#include "oru/json.h"
#include "oru/vlist.h"

namespace oru::dtl {
namespace {

using NlistRef = Ref<ORUDoNlist>;
using ValueRef = Ref<ORUDoValue>;

// The text of a string value, or null.
const char *string_of(ORUDoValue *value) {
    int32_t rc = 0;
    return value != nullptr ? oru_do_value_get_string(value, &rc) : nullptr;
}

ValueRef value_of_json(const char *text) {
    ORUDoError *error = nullptr;
    ValueRef value = ValueRef::adopt(
        oru_do_value_from_json(text, static_cast<int32_t>(std::strlen(text)), &error));
    const auto dropped = Ref<ORUDoError>::adopt(error);
    return dropped ? ValueRef() : std::move(value);
}

// The reader takes the elements of a bare array for texts of their own, so it gets the array with
// its type.
ValueRef selection_value(const char *text) {
    if (text[std::strspn(text, " \t\r\n")] != '[')
        return value_of_json(text);
    const auto typed = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!typed)
        return {};
    for (const char *piece : {"{\"%array\":", text, "}"})
        strbuf_append(*typed, piece);
    if (oru_do_strbuf_get_err(typed.get()) != 0)
        return {};
    return value_of_json(oru_do_strbuf_to_string(typed.get()));
}

void add_text(ORUDoNlist *names, ORUDoValue *value) {
    if (const char *text = string_of(value))
        oru_do_nlist_add_string(names, text);
}

// An array gives its strings, a string itself, anything else nothing.
NlistRef names_of(ORUDoValue *value) {
    ORUDoVlist *array = nullptr;
    if (oru_do_value_is_array(value) != 0) {
        int32_t rc = 0;
        array = oru_do_value_get_array(value, &rc);
        if (rc != 0 || array == nullptr)
            return {};
    }
    NlistRef names = NlistRef::adopt(oru_do_nlist_new());
    if (!names)
        return names;
    if (array == nullptr)
        add_text(names.get(), value);
    for (auto *item = array != nullptr ? array->first : nullptr; item != nullptr; item = item->next)
        add_text(names.get(), item->value);
    return names;
}

}  // namespace

Ref<ORUDoNlist> attr_select_list(const Fetch &fetch, ORUDoDtree *root) {
    if (fetch.mr_info->attr_select == nullptr)
        return {};
    const char *text = name_text(fetch.mr_info->attr_select);
    ValueRef resolved;
    if (is_variable(text))
        resolved = resolve(fetch.params, text, nullptr, fetch.parent, root);
    if (const char *replacement = string_of(resolved.get()))
        text = replacement;
    const ValueRef value = selection_value(text);
    return value ? names_of(value.get()) : NlistRef();
}

bool add_id_names(ORUDoNlist *out) {
    return oru_do_nlist_add_string(out, ORU_DO_NAME_URI) > 0 &&
           oru_do_nlist_add_string(out, ORU_DO_NAME_MR) > 0;
}

void select_attrs(ORUDoNlist *list, ORUDoNlist *selection, ORUDoNlist *out) {
    for (auto *item = list != nullptr ? list->first : nullptr; item != nullptr; item = item->next) {
        const char *name = name_text(item->name);
        if (selection == nullptr || name[0] == '_' || oru_do_nlist_index_of(selection, name) >= 0)
            oru_do_nlist_add(out, item->name);
    }
}

}  // namespace oru::dtl
