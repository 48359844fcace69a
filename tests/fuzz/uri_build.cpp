#include <algorithm>

#include "oru/uri_derive.h"
#include "tests/fuzz/uri_plan.h"

namespace fuzz {

namespace {

// ---- What came out ----

// The text of a key as a parse gives it; a maker that fills in the segments itself keeps what is no
// string escaped.
std::string key_of(const Key &key, bool filled_in) {
    const std::string text = key_text(key.value.get());
    return filled_in && oru_do_value_is_string(key.value.get()) == 0 ? text : unescaped(text);
}

void check_segment(ORUDoUriSegment *found, const Segment &segment, bool filled_in) {
    CHECK(segment.name == oru_do_uri_segment_get_name(found));
    ORUDoNvlist *keys = oru_do_uri_segment_get_keys(found);
    const int32_t count = keys != nullptr ? oru_do_nvlist_get_len(keys) : 0;
    CHECK(count == static_cast<int32_t>(segment.keys.size()));
    for (int32_t i = 0; i < count; ++i) {
        const Key &key = segment.keys[static_cast<size_t>(i)];
        ORUDoNvlistItem *item = oru_do_nvlist_get_item(keys, i);
        int32_t rc = 0;
        CHECK(key.name == oru_do_nvlist_item_get_name(item));
        CHECK(key_of(key, filled_in) ==
              oru_do_value_get_string(oru_do_nvlist_item_get_value(item), &rc));
    }
}

// The last segment alone is filled in by its maker.
void check_segments(ORUDoUri *uri, const Plan &plan, size_t count, bool filled_in) {
    CHECK(oru_do_uri_get_segment_count(uri) == static_cast<int32_t>(count));
    for (size_t i = 0; i < count; ++i)
        check_segment(oru_do_uri_get_segment(uri, static_cast<int32_t>(i)), plan[i],
                      filled_in && i + 1 == count);
}

bool reads_back(int32_t type) {
    return (type >= 0 && type <= 8) || (type >= 12 && type <= 15) || type == 103 || type == 107 ||
           type == 108;
}

void check_typed_keys(ORUDoUri *uri, const Segment &segment) {
    for (size_t i = 0; i < segment.keys.size(); ++i) {
        const Key &key = segment.keys[i];
        const int32_t type = oru_do_value_get_type(key.value.get());
        if (!reads_back(type))
            continue;
        int32_t rc = 0;
        const Value by_index(oru_do_uri_get_key_w_type(uri, static_cast<int32_t>(i), type, &rc));
        CHECK(rc == 0 && oru_do_value_equals(by_index.get(), key.value.get()) != 0);
        const Value by_name(
            oru_do_uri_get_key_by_name_w_type(uri, Text(key.name).get(), type, &rc));
        CHECK(rc == 0 && oru_do_value_equals(by_name.get(), key.value.get()) != 0);
        const Value of_segment(oru_do_uri_segment_get_key_w_type(
            oru_do_uri_get_segment_last(uri), static_cast<int32_t>(i), type, &rc));
        CHECK(rc == 0 && oru_do_value_equals(of_segment.get(), key.value.get()) != 0);
    }
}

Uri reparsed(const Uri &uri) {
    CHECK(uri != nullptr);
    Uri again(oru_do_uri_validate_new(Text(text_of(uri)).get()));
    CHECK(again != nullptr);
    return again;
}

// A segment whose maker counts one character too many still ends with its text.
void check_last_text(const Uri &uri) {
    const OwnText last(
        oru_do_uri_segment_get_str_copy(uri.get(), oru_do_uri_get_segment_last(uri.get())));
    CHECK(text_of(uri).substr(text_of(uri).rfind('/') + 1) == last.get());
}

void check_made(const Uri &uri, const Plan &plan, size_t count, bool filled_in) {
    const Uri again = reparsed(uri);
    check_segments(again.get(), plan, count, false);
    check_typed_keys(again.get(), plan[count - 1]);
    check_segments(uri.get(), plan, count, filled_in);
    check_last_text(again);
    check_last_text(uri);
}

// ---- Makers ----

Name name_of(const Segment &segment) {
    return Name(oru_do_name_new(Text(segment.name).get()));
}

Keys keys_of(const Segment &segment) {
    Keys keys(oru_do_nvlist_new());
    for (const Key &key : segment.keys)
        oru_do_nvlist_add(keys.get(), Text(key.name).get(), key.value.get());
    return keys;
}

Properties properties_of(const Segment &segment) {
    Properties props(oru_do_properties_new());
    for (const Key &key : segment.keys)
        oru_do_properties_set_value(props.get(), Text(key.name).get(), key.value.get());
    return props;
}

// A type whose primary keys are those of the segment, between others.
MrMeta meta_of(const Segment &segment) {
    const Name name(oru_do_name_new("t"));
    MrMeta meta(
        oru_do_mr_meta_new(name.get(), nullptr, name.get(), ORU_ACCESS_READ, nullptr, nullptr));
    int32_t index = 0;
    for (const Key &key : segment.keys) {
        const Name key_name(oru_do_name_new(Text(key.name).get()));
        const PropMeta prop(oru_do_prop_meta_new(key_name.get(), ORU_PROP_KEY, 1, ++index, nullptr,
                                                 oru_do_value_get_type(key.value.get()), name.get(),
                                                 ORU_MULTIPLICITY_ONE, ORU_REF_NONE,
                                                 ORU_ACCESS_READ, 0));
        oru_do_mr_meta_add_prop_meta(meta.get(), prop.get());
    }
    return meta;
}

void try_children(const Uri &parent, const Plan &plan, size_t count, bool is_parsed) {
    const Segment &segment = plan[count - 1];
    const Name name = name_of(segment);
    const Properties props = properties_of(segment);
    const MrMeta meta = meta_of(segment);
    const Uri by_props(
        oru_do_uri_new_from_parent_uri_props(parent.get(), name.get(), props.get(), meta.get()));
    check_made(by_props, plan, count, is_parsed);
    const Uri by_keys(
        oru_do_uri_new_from_parent_uri_key_props(parent.get(), name.get(), props.get()));
    check_made(by_keys, plan, count, is_parsed);
}

void try_one_key(const std::string &parent, const Plan &plan, size_t count) {
    const Segment &segment = plan[count - 1];
    if (segment.keys.size() != 1)
        return;
    const Key &key = segment.keys[0];
    const Text ref(segment.name);
    const Text name(key.name);
    const Uri by_value(
        oru_do_uri_new_val(Text(parent).get(), ref.get(), name.get(), key.value.get()));
    check_made(by_value, plan, count, false);
    int32_t rc = 0;
    if (oru_do_value_is_string(key.value.get()) != 0) {
        const char *text = oru_do_value_get_string(key.value.get(), &rc);
        check_made(Uri(oru_do_uri_new_str(Text(parent).get(), ref.get(), name.get(), text)), plan,
                   count, false);
    }
    if (oru_do_value_is_signed_int_number(key.value.get()) != 0) {
        const int64_t number = oru_do_value_to_int64(key.value.get(), &rc);
        check_made(Uri(oru_do_uri_new_num(Text(parent).get(), ref.get(), name.get(), number)), plan,
                   count, false);
    }
}

// From the root down, child by child.
Uri chain(const Plan &plan, const char *root, bool is_parsed) {
    Uri uri(is_parsed ? oru_do_uri_validate_new(root) : oru_do_uri_new(root));
    for (size_t i = 0; i < plan.size(); ++i) {
        const std::string parent = text_of(uri);
        Uri child(oru_do_uri_new_from_parent_uri(uri.get(), name_of(plan[i]).get(),
                                                 keys_of(plan[i]).get()));
        CHECK(oru_do_uri_get_parent_uri(child.get()) == uri.get());
        check_made(child, plan, i + 1, is_parsed);
        Uri next = is_parsed ? reparsed(child) : Uri(oru_do_uri_new(text_of(child).c_str()));
        if (i + 1 == plan.size()) {
            try_children(uri, plan, i + 1, is_parsed);
            if (parent != "//")
                try_one_key(parent, plan, i + 1);
        }
        uri = std::move(next);
    }
    return uri;
}

// ---- Collections ----

void check_query(const Uri &coll, const Plan &plan, const std::string &query) {
    check_segments(coll.get(), plan, plan.size(), false);
    const char *found = oru_do_uri_get_query_part(coll.get());
    CHECK(found != nullptr && query == found);
    CHECK(oru_do_uri_is_coll_uri(coll.get()) == 1);
    CHECK(oru_do_uri_has_type_query_part(coll.get()) == (query[0] == ':'));
}

// The member of the collection in each of the two ways to make one. A plan is moved about for it,
// and is what it was at the end.
void try_members(const Uri &coll, Plan &plan, const std::string &ref) {
    plan.push_back(segment_of("x;k=Kone;l=H2"));
    plan.back().name = ref;
    const Keys keys = keys_of(plan.back());
    const Uri member(oru_do_uri_new_from_coll_uri(coll.get(), keys.get()));
    check_made(member, plan, plan.size(), true);
    const Uri of_text(oru_do_uri_new_from_coll_uri_str(text_of(coll).c_str(), keys.get()));
    if (text_of(coll).find('?') > 2)
        CHECK(oru_do_uri_equals(member.get(), of_text.get()) == 1);
    plan.back().keys.clear();
    const Uri bare(oru_do_uri_get_child_uri_from_coll_uri(coll.get()));
    check_made(bare, plan, plan.size(), false);
    const OwnText bare_text(oru_do_uri_get_child_from_coll_uri(coll.get()));
    CHECK(text_of(bare) == bare_text.get());
    const Uri back(oru_do_uri_new_coll(bare.get(), nullptr));
    CHECK(oru_do_uri_equals(back.get(), coll.get()) == 1);
    plan.pop_back();
}

void try_collections(const Uri &uri, Plan &plan, const std::string &ref) {
    const Uri coll(oru_do_uri_new_coll(uri.get(), Text(ref).get()));
    check_query(coll, plan, ref);
    // A query of one character is none to the parser.
    if (ref.size() < 2)
        return;
    check_query(reparsed(coll), plan, ref);
    if (ref.find(':') == std::string::npos)
        CHECK(oru_do_uri_get_coll_type(coll.get()) == ORU_URI_COLL_PLAIN);
    if (plan.size() < URI_MAX_SEGMENTS)
        try_members(coll, plan, ref);
}

int32_t kind_of(const std::string &base) {
    const bool star = base.back() == '*';
    if (base[0] == '/')
        return star ? ORU_URI_COLL_STAR_TYPE : ORU_URI_COLL_TYPE;
    return star ? ORU_URI_COLL_INFIX_STAR_TYPE : ORU_URI_COLL_INFIX_TYPE;
}

void try_wildcards(const Uri &uri, const Plan &plan, std::string ref) {
    const Uri any(oru_do_uri_new_coll_wildcard(uri.get(), "", "type"));
    CHECK(oru_do_uri_get_coll_type(any.get()) == kind_of(text_of(uri)));
    check_query(reparsed(any), plan, ":type");
    std::erase(ref, ':');
    if (ref.empty())
        return;
    const Uri named(oru_do_uri_new_coll_wildcard(uri.get(), Text(ref).get(), Text(ref).get()));
    CHECK(oru_do_uri_get_coll_type(named.get()) == ORU_URI_COLL_REF_TYPE);
    check_query(reparsed(named), plan, ref + ":" + ref);
}

// ---- Locations and prefixes ----

void try_location(const Uri &uri, const std::string &text) {
    const std::string id = escaped(text);
    const Uri location(oru_do_uri_new(("//locations;locationId=" + id).c_str()));
    const Uri absolute(oru_do_uri_new_absolute(uri.get(), location.get()));
    CHECK(text_of(absolute) == text_of(location) + text_of(uri));
    const Uri of_texts(oru_do_uri_new_absolute_from_uri_str(Text(text_of(uri)).get(),
                                                            Text(text_of(location)).get()));
    CHECK(oru_do_uri_equals(of_texts.get(), absolute.get()) == 1);
    const Uri relative(oru_do_uri_new_relative(text_of(absolute).c_str()));
    CHECK(oru_do_uri_equals(relative.get(), uri.get()) == 1);
    CHECK(oru_do_uri_relative_equals(absolute.get(), uri.get()) == 1);
    CHECK(oru_do_uri_is_at(absolute.get(), Text(id).get()) == 1);
    const std::unique_ptr<char[]> room(new char[id.size() + 1]);
    const auto size = static_cast<int32_t>(id.size());
    CHECK(oru_do_uri_get_location_str(absolute.get(), room.get(), size + 1) == 0);
    CHECK(id == room.get());
    if (size > 0)
        CHECK(oru_do_uri_get_location_str(absolute.get(), room.get(), size) == 10000);
    if (oru_do_uri_get_segment_count(uri.get()) == URI_MAX_SEGMENTS)
        return;
    const Uri root(oru_do_uri_new_absolute_root_from_uri(absolute.get()));
    CHECK(root != nullptr && oru_do_uri_equals(root.get(), location.get()) == 1);
}

void try_prefixes(const Uri &uri, const Plan &plan) {
    const int32_t absolute = oru_do_uri_is_absolute(uri.get());
    for (size_t depth = 1; depth + static_cast<size_t>(absolute) <= plan.size(); ++depth) {
        const char *rest = nullptr;
        const Uri prefix(
            oru_do_uri_new_from_descendant(uri.get(), static_cast<int32_t>(depth), &rest));
        CHECK(text_of(prefix) + rest == text_of(uri));
        const size_t count = depth + static_cast<size_t>(absolute);
        check_made(prefix, plan, count, false);
    }
    const auto beyond = static_cast<int32_t>(plan.size()) + 1 - absolute;
    CHECK(oru_do_uri_new_from_descendant(uri.get(), beyond, nullptr) == nullptr);
}

}  // namespace

void try_builders(const std::string &text, const std::string &other) {
    Plan plan = plan_of(text);
    if (plan.empty())
        return;
    const std::string ref = clean(other, "r");
    const char *root = text.starts_with("//") ? "//" : "/";
    const Uri lazy = chain(plan, root, false);
    const Uri uri = chain(plan, root, true);
    CHECK(oru_do_uri_equals(uri.get(), lazy.get()) == 1);
    try_prefixes(uri, plan);
    try_collections(uri, plan, ref);
    try_wildcards(uri, plan, ref);
    if (root[1] == '\0')
        try_location(uri, other);
}

}  // namespace fuzz
