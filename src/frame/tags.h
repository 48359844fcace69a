// The allocation tags of the library. Numbers and names are read by outside tools, so the list is
// closed: entries that no allocation uses any more keep their place.
#ifndef ORU_SRC_FRAME_TAGS_H
#define ORU_SRC_FRAME_TAGS_H

#include <cstdint>

#include "oru/lib.h"

// X(identifier, name), in order of index.
#define ORU_TAG_LIST(X)                        \
    X(base, "oruapi")                          \
    X(name, "oruapi-name")                     \
    X(value, "oruapi-value")                   \
    X(nlist, "oruapi-nlist")                   \
    X(vlist, "oruapi-vlist")                   \
    X(ntlist, "oruapi-ntlist")                 \
    X(act_meta, "oruapi-act-meta")             \
    X(act_meta_list, "oruapi-act-meta-list")   \
    X(cond, "oruapi-cond")                     \
    X(conf_op, "oruapi-conf-op")               \
    X(conf_ops, "oruapi-conf-ops")             \
    X(constr, "oruapi-constr")                 \
    X(constr_list, "oruapi-constr-list")       \
    X(error, "oruapi-error")                   \
    X(error_list, "oruapi-error-list")         \
    X(event, "oruapi-event")                   \
    X(iter, "oruapi-iter")                     \
    X(mr_meta, "oruapi-mr-meta")               \
    X(mr_meta_list, "oruapi-mr-meta-list")     \
    X(nvlist, "oruapi-nvlist")                 \
    X(prop_errs, "oruapi-prop-errs")           \
    X(props, "oruapi-props")                   \
    X(props_list, "oruapi-props-list")         \
    X(prop_meta, "oruapi-prop-meta")           \
    X(prop_meta_list, "oruapi-prop-meta-list") \
    X(range, "oruapi-range")                   \
    X(strbuf, "oruapi-strbuf")                 \
    X(uri, "oruapi-uri")                       \
    X(uri_misc, "oruapi-uri-misc")             \
    X(uri_sml_misc, "oruapi-uri-sml-misc")     \
    X(vtable, "oruapi-vtable")                 \
    X(typedef_meta, "oruapi-typedef-meta")     \
    X(dtree, "oruapi-dtree")                   \
    X(dtree_misc, "oruapi-dtree-misc")         \
    X(s_type_meta, "oruapi-s-type-meta")       \
    X(strbuf_misc, "oruapi-strbuf-misc")       \
    X(prop_list_item, "oruapi-prop-list-item") \
    X(mr_meta_list_i, "oruapi-mr-meta-list-i") \
    X(prop_err, "oruapi-prop-err")             \
    X(strdup, "oruapi-strdup")                 \
    X(value_misc, "oruapi-value-misc")         \
    X(value_sml_misc, "oruapi-value-sml-misc") \
    X(conf_op_item, "oruapi-conf-op-item")     \
    X(act_mlist_item, "oruapi-act-mlist-item") \
    X(nlist_item, "oruapi-nlist-item")         \
    X(ntlist_item, "oruapi-ntlist-item")       \
    X(c_list_item, "oruapi-c-list-item")       \
    X(cond_misc, "oruapi-cond-misc")           \
    X(range_el, "oruapi-range-el")             \
    X(uri_segment, "oruapi-uri-segment")       \
    X(property, "oruapi-property")             \
    X(json, "oruapi-json")                     \
    X(nvlist_item, "oruapi-nvlist-item")       \
    X(vtable_item, "oruapi-vtable-item")       \
    X(err_list_item, "oruapi-err-list-item")   \
    X(vlist_item, "oruapi-vlist-item")         \
    X(pr_m_list_item, "oruapi-pr-m-list-item") \
    X(mem_track, "oruapi-mem-track")           \
    X(vtable_sorter, "oruapi-vtable_sorter")   \
    X(seq_ht_table, "oruapi-seq_ht_table")     \
    X(util, "oruapi-util")                     \
    X(mutex, "oruapi-mutex")                   \
    X(md, "oruapi-md")                         \
    X(rows_props, "oruapi-rows_props")         \
    X(record_cache, "oruapi-record-cache")     \
    X(rec_cache_elem, "oruapi-rec-cache-elem") \
    X(hashtable, "oruapi-hashtable")           \
    X(ht_array, "oruapi-ht-array")             \
    X(props_ht_elem, "oruapi-props-ht-elem")   \
    X(mr_meta_bool, "oruapi-mr-meta-bool")

namespace oru {

enum class Tag : uint32_t {
#define ORU_TAG_ENUMERATOR(identifier, name) identifier,
    ORU_TAG_LIST(ORU_TAG_ENUMERATOR)
#undef ORU_TAG_ENUMERATOR
};

// The number that the allocator knows the tag by.
constexpr uint32_t tag_word(Tag tag) {
    return ORU_TAG_COMPONENT + static_cast<uint32_t>(tag);
}

}  // namespace oru

#endif
