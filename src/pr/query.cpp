// What the where clause and the order of a request ask of a provider.
#include <cstring>

#include "do/name.h"
#include "do/nlist.h"
#include "do/nvlist.h"
#include "frame/require.h"
#include "oru/json.h"
#include "oru/nlist.h"
#include "oru/pr_walk.h"
#include "oru/rc.h"
#include "oru/strbuf.h"
#include "oru/value.h"
#include "oru/vtable.h"

namespace {

using oru::Ref;

bool is_word(const char *word, size_t length, const char *text) {
    return std::strlen(text) == length && std::memcmp(word, text, length) == 0;
}

// Of the word behind the blank at `blank`.
char direction_at(const char *blank) {
    const char *word = blank + std::strspn(blank, " ");
    const size_t length = std::strcspn(word, " ");
    if (is_word(word, length, "desc"))
        return 'd';
    return is_word(word, length, "snmp") ? 's' : 'a';
}

Ref<ORUDoName> name_of(const char *text, size_t length) {
    return Ref<ORUDoName>::adopt(oru_do_name_new_l(text, static_cast<int32_t>(length)));
}

// The bare name; one without a direction is shared.
Ref<ORUDoName> bare_name(ORUDoName *name, size_t length) {
    const char *text = oru::name_text(name);
    return text[length] == '\0' ? Ref<ORUDoName>::share(name) : name_of(text, length);
}

void add_order_names(const ORUDoNlist &order, ORUDoNlist *attrs, ORUDoNlist *order_names,
                     char *directions) {
    for (const auto *item = order.first; item != nullptr; item = item->next) {
        const char *text = oru::name_text(item->name);
        const size_t length = std::strcspn(text, " ");
        const auto name = bare_name(item->name, length);
        oru_do_nlist_add(attrs, name.get());
        oru_do_nlist_add(order_names, name.get());
        *directions++ = direction_at(text + length);
    }
}

void add_where_names(const ORUDoNvlist &where, ORUDoNlist *attrs) {
    for (const auto *item = where.first; item != nullptr; item = item->next) {
        const auto name = name_of(item->name, std::strcspn(item->name, " "));
        oru_do_nlist_add(attrs, name.get());
    }
}

// Rows with this number and less are left out by the item.
bool asks_for_index(const ORUDoNvlistItem &item) {
    if (std::strcmp(item.name, "_resultIndex >") == 0)
        return true;
    int32_t code = ORU_OK;
    return std::strcmp(item.name, "_resultIndex >=") == 0 &&
           oru_do_value_to_long(item.value, &code) != 0;
}

void add_names(const ORUDoNlist *names, ORUDoStrbuf *buf) {
    for (const auto *item = names != nullptr ? names->first : nullptr; item != nullptr;
         item = item->next) {
        oru_do_strbuf_add_char(buf, '+');
        oru_do_strbuf_add_string(buf, oru::name_text(item->name));
    }
}

}  // namespace

void oru_pr_get_where_and_orderby_attrs(ORUDoNvlist *where, ORUDoNlist *order, ORUDoNlist *attrs,
                                        ORUDoNlist *order_names, char *directions) {
    ORU_REQUIRE(attrs);
    if (oru_do_nlist_get_len(order) > 0) {
        ORU_REQUIRE(order_names);
        ORU_REQUIRE(directions);
        add_order_names(*order, attrs, order_names, directions);
    }
    if (where != nullptr)
        add_where_names(*where, attrs);
}

int32_t oru_pr_is_order_by_key(ORUDoNlist *order, const char *const *keys, int32_t key_count) {
    const int32_t length = oru_do_nlist_get_len(order);
    if (length == 0)
        return 1;
    if (length != key_count)
        return 0;
    ORU_REQUIRE(keys);
    for (int32_t i = 0; i < key_count; ++i) {
        if (oru_do_nlist_index_of(order, keys[i]) != i)
            return 0;
    }
    return 1;
}

int32_t oru_pr_need_result_idx(ORUPrCtx *ctx) {
    ORUDoNvlist *where = oru_pr_orucore_ctx_get_where_clause(ctx);
    return where != nullptr && oru::chain(*where).find(asks_for_index) != nullptr ? 1 : 0;
}

int32_t oru_pr_make_get_next_id(ORUDoNvlist *where, ORUDoNlist *names1, ORUDoNlist *names2,
                                ORUDoStrbuf *buf) {
    if (where != nullptr)
        oru_do_nvlist_to_json(where, buf);
    add_names(names1, buf);
    add_names(names2, buf);
    return oru_do_strbuf_get_err(buf);
}

void oru_pr_vtable_free_fn(void *, void *vtable) {
    oru_do_vtable_deref(static_cast<ORUDoVtable *>(vtable));
}
