#include "dtl/variables.h"

#include <cstring>

#include "do/name.h"
#include "do/strbuf.h"
#include "frame/text.h"
#include "oru/error.h"
#include "oru/nvlist.h"

namespace oru::dtl {
namespace {

using ValueRef = Ref<ORUDoValue>;

bool is_param(const char *text) {
    return text[0] == '$' && text[1] != '$';
}

// "@name", neither a path nor doubled.
bool is_node_name(const char *text) {
    return text[0] == '@' && text[1] != '@' && text[1] != '(';
}

// Takes the path's steps up, the first of which stays at the node at hand, and reads the rest
// there.
ORUDoValue *value_above(ORUDoDtree *node, const char *path) {
    constexpr size_t kStep = 3;
    const char *rest = path + kStep;
    for (; std::strncmp(rest, "../", kStep) == 0; rest += kStep) {
        node = oru_do_dtree_get_parent(node);
        if (node == nullptr)
            return nullptr;
    }
    return oru_do_dtree_get_value(node, rest);
}

ORUDoValue *value_at_path(const char *path, ORUDoDtree *node, ORUDoDtree *root) {
    if (path[0] == '/' && root != nullptr) {
        ORUDoError *error = nullptr;
        ORUDoValue *value = oru_do_dtree_get_value_by_path(root, path, nullptr, &error);
        oru_do_error_deref(error);
        return value;
    }
    if (node != nullptr && std::strncmp(path, "../", 3) == 0)
        return value_above(node, path);
    return nullptr;
}

ValueRef with_suffix(ORUDoValue &value, const char *suffix) {
    const auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text)
        return {};
    oru_do_value_to_strbuf(&value, 0, text.get());
    oru_do_strbuf_add_string(text.get(), suffix);
    if (oru_do_strbuf_get_err(text.get()) != 0)
        return {};
    return ValueRef::adopt(oru_do_value_new_string(oru_do_strbuf_to_string(text.get())));
}

ValueRef resolve_path(const char *text, ORUDoDtree *node, ORUDoDtree *root) {
    const PathText split = split_path(text);
    const Text path(duplicate(split.path.data(), split.path.size()));
    ORUDoValue *value = path ? value_at_path(path.get(), node, root) : nullptr;
    if (value == nullptr || *split.suffix == '\0')
        return ValueRef::share(value);
    return with_suffix(*value, split.suffix);
}

ValueRef resolve_known(ORUDoNvlist *params, const char *text, ORUDoDtree *node, ORUDoDtree *root) {
    if (text == nullptr)
        return {};
    if (is_param(text))
        return ValueRef::share(params != nullptr ? oru_do_nvlist_get_value(params, text + 1)
                                                 : nullptr);
    if (is_node_name(text))
        return ValueRef::share(node != nullptr ? oru_do_dtree_get_value(node, text + 1) : nullptr);
    if (text[0] == '@' && text[1] == '(')
        return resolve_path(text, node, root);
    return {};
}

// The name of the value of the row itself that "@(./name)" means.
std::string_view own_name(const char *text) {
    const std::string_view path = split_path(text).path;
    return path.size() >= 3 ? path.substr(2) : path;
}

ValueRef or_null_value(ORUDoValue *value) {
    return value != nullptr ? ValueRef::share(value) : ValueRef::adopt(oru_do_value_new_null());
}

ValueRef from_row(const RowContext &row, std::string_view name, ORUDoValue *fallback) {
    ORUDoValue *value = row_value(row.names, row.values, name);
    return or_null_value(value != nullptr ? value : fallback);
}

ValueRef resolve_in_row(const RowContext &row, const char *text, ORUDoValue *fallback) {
    if (std::strncmp(text, "@(./", 4) == 0)
        return from_row(row, own_name(text), fallback);
    ValueRef value = resolve_known(row.params, text, row.parent, row.root);
    if (value)
        return value;
    if (row.names == nullptr || row.values == nullptr)
        return ValueRef::share(fallback);
    return is_node_name(text) ? from_row(row, text + 1, fallback) : or_null_value(fallback);
}

}  // namespace

bool is_variable(const char *text) {
    return (text[0] == '$' && text[1] != '$') || (text[0] == '@' && text[1] != '@');
}

const char *variable_text(ORUDoValue *value) {
    int32_t rc = 0;
    const char *text = oru_do_value_get_string(value, &rc);
    return rc == 0 && text != nullptr && is_variable(text) ? text : nullptr;
}

PathText split_path(const char *text) {
    const char *path = text + 2;
    const char *end = std::strchr(path, ')');
    if (end == nullptr) {
        const std::string_view all(path);
        return {all, all.data() + all.size()};
    }
    return {{path, static_cast<size_t>(end - path)}, end + 1};
}

Ref<ORUDoValue> resolve(ORUDoNvlist *params, const char *text, ORUDoValue *fallback,
                        ORUDoDtree *node, ORUDoDtree *root) {
    ValueRef value = resolve_known(params, text, node, root);
    return value ? std::move(value) : ValueRef::share(fallback);
}

ORUDoValue *row_value(ORUDoNlist *names, ORUDoVlist *values, std::string_view name) {
    if (names == nullptr || values == nullptr)
        return nullptr;
    const ORUDoVlistItem *value = values->first;
    for (const ORUDoNlistItem *item = names->first; item != nullptr && value != nullptr;
         item = item->next, value = value->next) {
        if (name != name_text(item->name))
            continue;
        const bool present = value->value != nullptr && oru_do_value_is_null(value->value) == 0;
        return present ? value->value : nullptr;
    }
    return nullptr;
}

ORUDoValue *resolve_row(void *context, const char *text, ORUDoValue *fallback) {
    if (context == nullptr || text == nullptr)
        return ref(fallback);
    return resolve_in_row(*static_cast<RowContext *>(context), text, fallback).release();
}

// The newest value of a name comes first, where every lookup finds it.
void set_param(void *context, const char *text, ORUDoValue *value) {
    if (context == nullptr || text == nullptr || value == nullptr || !is_param(text))
        return;
    ORUDoNvlist *params = static_cast<RowContext *>(context)->params;
    oru_do_nvlist_delete_one(params, text + 1);
    oru_do_nvlist_add_at(params, text + 1, value, 0);
}

Ref<ORUDoUri> value_to_uri(ORUDoValue *value) {
    if (value == nullptr)
        return {};
    if (oru_do_value_is_string(value) == 0)
        return Ref<ORUDoUri>::share(oru_do_value_get_uri(value));
    int32_t rc = 0;
    const char *text = oru_do_value_get_string(value, &rc);
    return Ref<ORUDoUri>::adopt(text != nullptr ? oru_do_uri_new(text) : nullptr);
}

}  // namespace oru::dtl
