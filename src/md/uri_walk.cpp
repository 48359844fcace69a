// The walk from the root of the metadata, or from any resource in it, along the segments of a URI.
#include "frame/require.h"
#include "frame/trace.h"
#include "md/records.h"
#include "oru/md_lookup.h"
#include "oru/mr_meta.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/uri.h"

namespace {

using oru::Level;

const char *root_mr_type = "com.tarvex.lumo.orucore/System";

// The segment at hand.
struct Segment {
    const char *name = nullptr;
    ORUDoNvlist *keys = nullptr;
    int32_t nkeys = 0;
};

struct Walk {
    ORUDoUri *uri;
    int32_t count;
    int32_t index;
    ORUMdMrMeta *current;
    ORUDoNvlist **keys;
    uint8_t *secondary;
    ORUMdRefMeta **peer_ref;
};

// Primary keys pass. A secondary key passes when it comes first or behind another secondary one.
bool key_fits(ORUMdMrMeta &target, ORUDoNvlist *keys, int32_t position, uint8_t &secondary) {
    auto *item = oru_do_nvlist_get_item(keys, position);
    const char *name = item != nullptr ? oru_do_nvlist_item_get_name(item) : nullptr;
    if (name == nullptr)
        return false;
    const auto *key = oru_md_get_key_attr_meta_w_str(&target, name);
    if (key == nullptr)
        return false;
    if (oru_do_prop_meta_is_primary_key(key->prop_meta) != 0 || secondary != 0)
        return true;
    if (position == 0) {
        secondary = 1;
        return true;
    }
    ORU_TRACE(Level::failure,
              "URI error at %s: primary and secondary keys are not allowed to appear together\n",
              name);
    return false;
}

bool check_uri_keys(ORUMdMrMeta &target, const Segment &segment, uint8_t &secondary) {
    if (segment.keys == nullptr)
        return true;
    for (int32_t position = 0; position < segment.nkeys; ++position) {
        if (!key_fits(target, segment.keys, position, secondary))
            return false;
    }
    return true;
}

bool read_segment(const Walk &walk, Segment &segment) {
    auto *record = oru_do_uri_get_segment(walk.uri, walk.index);
    if (record == nullptr)
        return false;
    segment.name = oru_do_uri_segment_get_name(record);
    segment.keys = oru_do_uri_segment_get_keys(record);
    segment.nkeys = segment.keys != nullptr ? oru_do_nvlist_get_len(segment.keys) : 0;
    *walk.keys = segment.keys;
    if (segment.name == nullptr)
        ORU_TRACE(Level::failure, "segment has no name\n");
    return segment.name != nullptr;
}

// A reference that only implementations of the library resource at hand have. Exactly one of them
// may fit, and only that one marks the selection by a secondary key.
ORUMdRefMeta *find_ref_of_impls(const Walk &walk, const Segment &segment) {
    ORUMdRefMeta *taken = nullptr;
    uint8_t taken_secondary = *walk.secondary;
    for (auto *entry = walk.current->impl_mr_metas; entry != nullptr; entry = entry->next) {
        if (entry->mr == nullptr)
            continue;
        ORU_TRACE(Level::detail, "Analyzing %s\n", oru_md_mr_meta_to_string(entry->mr));
        auto *ref = oru_md_get_ref_meta_w_str(entry->mr, segment.name);
        uint8_t secondary = *walk.secondary;
        if (ref == nullptr || ref->target_mr == nullptr ||
            !check_uri_keys(*ref->target_mr, segment, secondary))
            continue;
        if (taken != nullptr) {
            ORU_TRACE(Level::failure, "ambiguous ref meta exiting\n");
            return nullptr;
        }
        taken = ref;
        taken_secondary = secondary;
    }
    *walk.secondary = taken_secondary;
    return taken;
}

// The reference that the segment names, with keys that fit.
ORUMdRefMeta *find_ref(const Walk &walk, const Segment &segment) {
    auto *ref = oru_md_get_ref_meta_w_str(walk.current, segment.name);
    if (ref == nullptr)
        return find_ref_of_impls(walk, segment);
    auto *target = ref->target_mr;
    if (target != nullptr && target->is_lib == 0 &&
        !check_uri_keys(*target, segment, *walk.secondary)) {
        ORU_TRACE(Level::failure, "Incorrect keys in target MR\n");
        return nullptr;
    }
    return ref;
}

// The implementation that a single key selects by its constant value, else the library resource.
ORUMdMrMeta *select_impl(ORUMdMrMeta *library, const Segment &segment) {
    if (segment.nkeys != 1)
        return library;
    auto *item = oru_do_nvlist_get_item(segment.keys, 0);
    if (item == nullptr) {
        ORU_TRACE(Level::failure, "Failed to get the key from nvlist\n");
        return library;
    }
    auto *value = oru_do_nvlist_item_get_value(item);
    if (value == nullptr) {
        ORU_TRACE(Level::failure, "Failed to get the value of key.\n");
        return library;
    }
    auto *impl = oru_md_mr_meta_by_key(library->impl_mr_metas, value);
    return impl != nullptr ? impl : library;
}

// Where the segment leads to; null when it leads nowhere.
ORUMdMrMeta *step(const Walk &walk) {
    Segment segment;
    if (!read_segment(walk, segment))
        return nullptr;
    auto *ref = find_ref(walk, segment);
    if (ref == nullptr)
        return nullptr;
    if (oru_do_prop_meta_get_ref_role(ref->prop_meta) == ORU_REF_PEER) {
        *walk.peer_ref = ref;
        return walk.current;
    }
    if (ref->target_mr == nullptr) {
        ORU_TRACE(Level::failure, "No target MR found, exiting\n");
        return nullptr;
    }
    return ref->target_mr->is_lib != 0 ? select_impl(ref->target_mr, segment) : ref->target_mr;
}

// Whether metadata alone leads no further.
bool ends_at(const Walk &walk, ORUMdMrMeta *next) {
    if (*walk.secondary != 0 && oru_do_mr_meta_is_oper_data(next->do_mr_meta) != 0)
        *walk.secondary = 0;
    return *walk.peer_ref != nullptr || next->is_lib != 0 || *walk.secondary != 0;
}

ORUMdMrMeta *run(Walk &walk, int32_t &remainder) {
    while (true) {
        auto *next = step(walk);
        if (next == nullptr) {
            ORU_TRACE(Level::failure, "seg_idx %d in %s unresolved\n", walk.index,
                      oru_do_uri_get_uri_str(walk.uri));
            return nullptr;
        }
        if (ends_at(walk, next)) {
            remainder = walk.count - walk.index - 1;
            return next;
        }
        ORU_TRACE(Level::detail, "seg_idx %d resolved to %s\n", walk.index,
                  oru_md_mr_meta_to_string(next));
        if (++walk.index == walk.count)
            return next;
        walk.current = next;
    }
}

ORUMdMrMeta *root_of(ORUMdMrMeta *start) {
    if (start->is_lib == 0)
        return start;
    return start->impl_mr_metas != nullptr ? start->impl_mr_metas->mr : nullptr;
}

}  // namespace

void oru_md_set_root_mr_type(const char *name) {
    if (oru_md_wrlock() != 0)
        return;
    root_mr_type = name;
    oru_md_unlock();
}

ORUMdMrMeta *oru_md_get_mr_meta_by_uri(ORUDoUri *uri, int32_t last_segs, ORUMdMrMeta *start_mr,
                                       int32_t *ret_remainder_uri_segs, ORUDoNvlist **ret_keys,
                                       uint8_t *ret_secondary, ORUMdRefMeta **ret_peer_ref) {
    ORU_REQUIRE(uri);
    ORU_REQUIRE(ret_remainder_uri_segs);
    ORUDoNvlist *keys = nullptr;
    uint8_t secondary = 0;
    ORUMdRefMeta *peer_ref = nullptr;
    const int32_t count = oru_do_uri_get_segment_count(uri);
    Walk walk{uri,
              count,
              last_segs > 0 ? count - last_segs : 0,
              start_mr,
              ret_keys != nullptr ? ret_keys : &keys,
              ret_secondary != nullptr ? ret_secondary : &secondary,
              ret_peer_ref != nullptr ? ret_peer_ref : &peer_ref};
    *ret_remainder_uri_segs = 0;
    if (walk.current == nullptr)
        walk.current = oru_md_get_mr_meta_by_name(root_mr_type);
    if (walk.current == nullptr)
        return nullptr;
    if (walk.index == 0 && oru_do_uri_is_root(uri) != 0)
        return root_of(walk.current);
    if (count <= walk.index)
        return nullptr;
    return run(walk, *ret_remainder_uri_segs);
}
