#include "oru/uri_derive.h"
#include "tests/fuzz/uri_fuzz.h"

namespace fuzz {

namespace {

constexpr size_t kNameRoom = 64;

// ---- Reading ----

void read_keys(ORUDoUriSegment *segment) {
    ORUDoNvlist *keys = oru_do_uri_segment_get_keys(segment);
    const int32_t count = keys != nullptr ? oru_do_nvlist_get_len(keys) : 0;
    for (int32_t i = -1; i <= count; ++i) {
        int32_t rc = 0;
        const Value text(oru_do_uri_segment_get_key_w_type(segment, i, ORU_DO_TYPE_STRING, &rc));
        CHECK((text != nullptr) == (i >= 0 && i < count));
        CHECK(text != nullptr || rc == 10000);
        const Value number(oru_do_uri_segment_get_key_w_type(segment, i, ORU_DO_TYPE_LONG, &rc));
    }
}

void read_last_keys(ORUDoUri *uri) {
    ORUDoNvlist *keys = oru_do_uri_get_keys(uri);
    const int32_t count = keys != nullptr ? oru_do_nvlist_get_len(keys) : 0;
    for (int32_t i = 0; i < count; ++i) {
        const char *name = oru_do_nvlist_item_get_name(oru_do_nvlist_get_item(keys, i));
        CHECK(oru_do_uri_get_key(uri, i) != nullptr);
        int32_t rc = 0;
        const Value by_index(oru_do_uri_get_key_w_type(uri, i, ORU_DO_TYPE_STRING, &rc));
        CHECK(by_index != nullptr && rc == 0);
        const Value by_name(oru_do_uri_get_key_by_name_w_type(uri, name, ORU_DO_TYPE_STRING, &rc));
        CHECK(by_name != nullptr && rc == 0);
    }
}

}  // namespace

void read(ORUDoUri *uri) {
    const int32_t count = oru_do_uri_get_segment_count(uri);
    CHECK(count >= -1 && count <= URI_MAX_SEGMENTS);
    for (int32_t i = 0; i < count; ++i) {
        ORUDoUriSegment *segment = oru_do_uri_get_segment(uri, i);
        CHECK(std::strlen(oru_do_uri_segment_get_name(segment)) < kNameRoom);
        const OwnText text(oru_do_uri_segment_get_str_copy(uri, segment));
        read_keys(segment);
    }
    CHECK(oru_do_uri_get_segment(uri, count) == nullptr);
    CHECK((oru_do_uri_get_segment_last(uri) != nullptr) == (count > 0));
    read_last_keys(uri);
    const char *query = oru_do_uri_get_query_part(uri);
    CHECK(oru_do_uri_has_type_query_part(uri) == (query != nullptr && query[0] == ':'));
    CHECK(oru_do_uri_get_coll_type(uri) >= 0 && oru_do_uri_get_coll_type(uri) <= 7);
    char location[8];
    oru_do_uri_get_location_str(uri, location, sizeof location);
    oru_do_uri_is_at(uri, "1");
    oru_do_uri_is_coll_uri(uri);
    if (ORUDoUri *parent = oru_do_uri_get_parent_uri(uri)) {
        oru_do_uri_get_segment_count(parent);
        oru_do_uri_get_parent_uri(parent);
    }
}

namespace {

void same_model(ORUDoUri *a, ORUDoUri *b) {
    const int32_t count = oru_do_uri_get_segment_count(a);
    CHECK(count == oru_do_uri_get_segment_count(b));
    for (int32_t i = 0; i < count; ++i) {
        CHECK(std::strcmp(oru_do_uri_segment_get_name(oru_do_uri_get_segment(a, i)),
                          oru_do_uri_segment_get_name(oru_do_uri_get_segment(b, i))) == 0);
    }
}

// ---- Deriving ----

void try_prefixes(ORUDoUri *uri) {
    const std::string text = oru_do_uri_get_uri_str(uri);
    for (int32_t depth = -1; depth <= URI_MAX_SEGMENTS + 1; ++depth) {
        const char *rest = nullptr;
        const Uri prefix(oru_do_uri_new_from_descendant(uri, depth, &rest));
        if (!prefix)
            continue;
        CHECK(text_of(prefix) + rest == text);
        read(prefix.get());
    }
}

// A collection without a name that is too long, or a segment too many, for its members.
bool has_members(ORUDoUri *coll) {
    const char *query = oru_do_uri_get_query_part(coll);
    return query == nullptr || (std::strlen(query) < kNameRoom &&
                                oru_do_uri_get_segment_count(coll) < URI_MAX_SEGMENTS);
}

void try_collections(ORUDoUri *uri) {
    for (const char *ref : {"c", static_cast<const char *>(nullptr)}) {
        const Uri coll(oru_do_uri_new_coll(uri, ref));
        if (!coll)
            continue;
        read(coll.get());
        if (!has_members(coll.get()))
            continue;
        const Uri member(oru_do_uri_new_from_coll_uri(coll.get(), nullptr));
        if (member)
            read(member.get());
    }
    if (has_members(uri)) {
        const Uri member(oru_do_uri_get_child_uri_from_coll_uri(uri));
        if (member)
            read(member.get());
    }
    const Uri wild(oru_do_uri_new_coll_wildcard(uri, "", "T"));
    CHECK(wild != nullptr);
}

void try_children(ORUDoUri *uri, const std::string &value) {
    const Value text(oru_do_value_new_string(value.c_str()));
    const Keys keys(oru_do_nvlist_new_from_item("k", text.get()));
    const Name name(oru_do_name_new("n"));
    Uri child(oru_do_uri_new_from_parent_uri(uri, name.get(), keys.get()));
    CHECK(child != nullptr);
    if (oru_do_uri_get_segment_count(uri) >= URI_MAX_SEGMENTS)
        return;
    read(child.get());
    // What a maker knows of the segments is what a parse finds, a query part apart.
    const Uri fresh(oru_do_uri_validate_new(oru_do_uri_get_uri_str(child.get())));
    if (fresh && oru_do_uri_is_coll_uri(fresh.get()) == 0)
        same_model(fresh.get(), child.get());
    CHECK(oru_do_uri_get_parent_uri(child.get()) == uri);
    const Uri grandchild(oru_do_uri_new_from_parent_uri(child.get(), name.get(), keys.get()));
    CHECK(grandchild != nullptr);
    if (oru_do_uri_get_segment_count(child.get()) < URI_MAX_SEGMENTS) {
        read(grandchild.get());
        try_prefixes(grandchild.get());
    }
}

void try_copies(ORUDoUri *uri) {
    const Uri clone(oru_do_uri_clone(uri));
    CHECK(oru_do_uri_equals(clone.get(), uri) == 1);
    same_model(clone.get(), uri);
    oru_do_uri_relative_equals(clone.get(), uri);
    const Uri merged(oru_do_uri_new_from_merge(uri, "/x/y", 2, "z"));
    CHECK(text_of(merged) == std::string("/x") + oru_do_uri_get_uri_str(uri) + "z");
    const Uri root(oru_do_uri_new_absolute_root_from_uri(uri));
    CHECK(root == nullptr || oru_do_uri_is_absolute(root.get()) == 1);
    const Uri raw(oru_do_uri_new_parse_unescape_key(oru_do_uri_get_uri_str(uri)));
    same_model(raw.get(), uri);
}

}  // namespace

void try_good(const std::string &text) {
    const Uri parsed(oru_do_uri_validate_new(Text(text).get()));
    const Uri lazy(oru_do_uri_new(Text(text).get()));
    try_prefixes(lazy.get());  // by the text alone
    read(parsed.get());
    same_model(parsed.get(), lazy.get());
    try_copies(parsed.get());
    try_prefixes(parsed.get());
    try_collections(parsed.get());
    try_children(parsed.get(), text);
}

void try_unparsed(const std::string &text) {
    const Uri uri(oru_do_uri_new(Text(text).get()));
    for (int32_t depth = -1; depth <= URI_MAX_SEGMENTS + 1; ++depth) {
        const char *rest = nullptr;
        const Uri prefix(oru_do_uri_new_from_descendant(uri.get(), depth, &rest));
        CHECK(prefix == nullptr || text_of(prefix) + rest == text);
    }
    const Uri coll(oru_do_uri_new_coll(uri.get(), "c"));
    CHECK(text_of(coll) == text + "?c");
    CHECK(oru_do_uri_is_coll_uri(coll.get()) == 1);
    const Uri of_last(oru_do_uri_new_coll(uri.get(), nullptr));
    const size_t slash = text.rfind('/');
    CHECK((of_last != nullptr) == (slash != std::string::npos && slash + 1 < text.size()));
    const Uri wild(oru_do_uri_new_coll_wildcard(uri.get(), "c", "T"));
    CHECK(text_of(wild) == text + "?c:T");
    const Uri clone(oru_do_uri_clone(uri.get()));
    CHECK(oru_do_uri_equals(clone.get(), uri.get()) == 1);
    const Uri merged(oru_do_uri_new_from_merge(uri.get(), Text(text).get(), 0, Text(text).get()));
    CHECK(text_of(merged) == text + text + text);
    CHECK(oru_do_uri_is_coll_uri(uri.get()) == (text.find('?') != std::string::npos));
    const int32_t kind = oru_do_uri_get_coll_type(uri.get());
    CHECK(kind >= 0 && kind <= 7);
}

}  // namespace fuzz
