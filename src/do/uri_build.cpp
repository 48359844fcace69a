// URIs built of a parent and keys.
#include "do/uri.h"
#include "oru/name.h"
#include "oru/nvlist.h"
#include "oru/uri_derive.h"
#include "oru/value.h"

namespace {

using oru::Ref;

// ---- One key, from texts ----

bool is_blank(const char *text) {
    return text == nullptr || text[0] == '\0';
}

// Only "/" is left out; a parent of "//" gives a text with three slashes, which does not parse.
bool write_parent(ORUDoUri &uri, std::string_view parent, ORUDoStrbuf &buf) {
    if (parent == "/")
        return true;
    oru::strbuf_append(buf, parent);
    return oru::parent_text(uri).assign(parent, oru::exact_room(parent.size()));
}

void write_ref_name(std::string_view ref, ORUDoStrbuf &buf) {
    oru::strbuf_append(buf, "/");
    oru::strbuf_append(buf, ref);
    if (ref.size() >= oru::kUriRefNameRoom) {
        ORU_FATAL("Not enough room for ref name %d %d %s", oru::kUriRefNameRoom,
                  static_cast<int>(ref.size()), ref.data());
    }
}

void write_key_name(std::string_view name, ORUDoStrbuf &buf) {
    oru::strbuf_append(buf, ";");
    oru::strbuf_append(buf, name);
    oru::strbuf_append(buf, "=");
}

// A long text keeps the storage that the buffer hands out.
bool take_text(ORUDoUri &uri, ORUDoStrbuf &buf) {
    if (buf.cur == nullptr)
        return false;
    const std::string_view text(buf.str, static_cast<size_t>(buf.len));
    const size_t room = oru::exact_room(text.size());
    const auto storage = oru::uri_texts.class_for(room);
    if (storage != oru::StorageClass::heap)
        return oru::uri_text(uri).store(text, storage);
    uri.uri_str_alloc = storage;
    return oru_do_strbuf_to_string_ptr(&buf, &uri.uri_str) != nullptr;
}

// `write_key` writes the key's text and tells whether it could.
template <class WriteKey>
ORUDoUri *build(const char *parent, const char *ref, const char *key, WriteKey &&write_key) {
    if (is_blank(parent) || is_blank(ref) || is_blank(key))
        return nullptr;
    auto uri = oru::make_ref<ORUDoUri>();
    const auto buf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!uri || !buf || !write_parent(*uri, parent, *buf))
        return nullptr;
    write_ref_name(ref, *buf);
    write_key_name(key, *buf);
    if (!write_key(buf.get()) || !take_text(*uri, *buf))
        return nullptr;
    return uri.release();
}

// ---- A child, from objects ----

// What a parse makes of a key is a string.
bool collect(ORUDoNvlist &collected, const char *name, std::string_view text) {
    ORUDoValue *value = oru_do_value_new_string_l(text.data(), static_cast<int32_t>(text.size()));
    const int32_t added = oru_do_nvlist_add(&collected, name, value);
    oru_do_value_deref(value);
    return added > 0;
}

bool write_string_key(ORUDoStrbuf &buf, const char *name, ORUDoValue *value,
                      ORUDoNvlist *collected) {
    int32_t rc = 0;
    const char *text = oru_do_value_get_string(value, &rc);
    if (text == nullptr || rc != 0 || oru_do_uri_escape_str(text, &buf) != 0)
        return false;
    return collected == nullptr || collect(*collected, name, text);
}

// Of a value that is no string the list gets the escaped text.
bool write_other_key(ORUDoStrbuf &buf, const char *name, ORUDoValue *value,
                     ORUDoNvlist *collected) {
    const auto before = static_cast<size_t>(buf.len);
    if (oru_do_uri_value_to_keystr(value, &buf) != 0)
        return false;
    const auto after = static_cast<size_t>(buf.len);
    return collected == nullptr || collect(*collected, name, {buf.str + before, after - before});
}

bool write_key(ORUDoStrbuf &buf, ORUDoNvlistItem &item, ORUDoNvlist *collected) {
    const char *name = oru_do_nvlist_item_get_name(&item);
    ORUDoValue *value = oru_do_nvlist_item_get_value(&item);
    write_key_name(name, buf);
    return oru_do_value_get_type(value) == ORU_DO_TYPE_STRING
               ? write_string_key(buf, name, value, collected)
               : write_other_key(buf, name, value, collected);
}

// The text of a child without keys.
void write_child(ORUDoStrbuf &buf, std::string_view parent, std::string_view ref) {
    const bool at_root = parent == "/" || parent == oru::kUriSystemRoot;
    oru::strbuf_append(buf, parent);
    oru::strbuf_append(buf, at_root ? "" : "/");
    oru::strbuf_append(buf, ref);
    if (ref.size() >= oru::kUriRefNameRoom) {
        ORU_FATAL("Not enough room for refname %d %d %s", oru::kUriRefNameRoom,
                  static_cast<int>(ref.size()), ref.data());
    }
}

// A parent without room for one segment more, or without a count, leaves its child to the parser.
bool can_prefill(const ORUDoUri &parent) {
    return oru::uri_is_parsed(parent) && parent.num_segments >= 0 &&
           parent.num_segments < oru::kUriMaxSegments;
}

void prefill_child(ORUDoUri &child, const ORUDoUri &parent, std::string_view ref, size_t key_length,
                   Ref<ORUDoNvlist> keys) {
    const int32_t n = parent.num_segments;
    const size_t start = n > 0 ? size_t{parent.segment_table[n - 1].end} + 2
                               : std::string_view(parent.uri_str).size();
    oru::uri_copy_segments(child, parent, n);
    // The end is one more than a parse gives, and callers know it so.
    oru::uri_append_segment(child, start, start + ref.size() + key_length, ref, std::move(keys));
}

bool link_to_parent(ORUDoUri &child, ORUDoUri &parent) {
    child.parent_uri = oru::ref(&parent);
    const std::string_view text(parent.uri_str);
    return oru::parent_text(child).assign(text, oru::exact_room(text.size()));
}

Ref<ORUDoUri> make_child(ORUDoUri &parent, std::string_view ref, ORUDoNvlist &keys) {
    const auto buf = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!buf)
        return {};
    write_child(*buf, parent.uri_str, ref);
    const int32_t before = buf->len;
    const bool prefill = can_prefill(parent);
    Ref<ORUDoNvlist> collected;
    if (oru_do_nvlist_get_len(&keys) > 0 &&
        !oru::uri_add_keys(*buf, keys, prefill ? &collected : nullptr))
        return {};
    auto child = oru::make_uri(*buf);
    if (!child || !link_to_parent(*child, parent))
        return {};
    if (prefill)
        prefill_child(*child, parent, ref, static_cast<size_t>(buf->len - before),
                      std::move(collected));
    return child;
}

}  // namespace

bool oru::uri_add_keys(ORUDoStrbuf &buf, ORUDoNvlist &keys, Ref<ORUDoNvlist> *collected) {
    if (collected != nullptr) {
        *collected = Ref<ORUDoNvlist>::adopt(oru_do_nvlist_new());
        if (!*collected)
            return false;
    }
    for (ORUDoNvlistItem *item = keys.first; item != nullptr; item = item->next) {
        if (!write_key(buf, *item, collected != nullptr ? collected->get() : nullptr))
            return false;
    }
    return oru_do_strbuf_get_err(&buf) == 0;
}

ORUDoUri *oru_do_uri_new_str(const char *parent, const char *ref, const char *key,
                             const char *str) {
    if (str == nullptr)
        return nullptr;
    return build(parent, ref, key,
                 [str](ORUDoStrbuf *buf) { return oru_do_uri_escape_str(str, buf) == 0; });
}

ORUDoUri *oru_do_uri_new_val(const char *parent, const char *ref, const char *key,
                             ORUDoValue *val) {
    if (val == nullptr)
        return nullptr;
    return build(parent, ref, key,
                 [val](ORUDoStrbuf *buf) { return oru_do_uri_value_to_keystr(val, buf) == 0; });
}

ORUDoUri *oru_do_uri_new_num(const char *parent, const char *ref, const char *key, int64_t num) {
    return build(parent, ref, key,
                 [num](ORUDoStrbuf *buf) { return oru_do_strbuf_add_long(buf, num) > 0; });
}

ORUDoUri *oru_do_uri_new_from_parent_uri(ORUDoUri *parent_uri, ORUDoName *child_ref_name,
                                         ORUDoNvlist *keys) {
    if (parent_uri == nullptr || child_ref_name == nullptr || keys == nullptr)
        return nullptr;
    const char *ref = oru_do_name_get_strname(child_ref_name);
    return make_child(*parent_uri, ref, *keys).release();
}
