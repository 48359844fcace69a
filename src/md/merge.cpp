// The merge of a library resource into one that implements it. Nothing is inherited at lookup time.
#include "md/merge.h"

#include "md/records.h"
#include "oru/md_lookup.h"
#include "oru/mr_meta.h"

namespace {

ORUMdAttrMeta *copy_attr(const ORUMdAttrMeta &attr) {
    auto *copy = oru_md_new_attr_meta(attr.name, attr.group_name, attr.prop_meta);
    if (copy != nullptr)
        copy->typedef_meta = attr.typedef_meta;
    return copy;
}

ORUMdRefMeta *copy_ref(const ORUMdRefMeta &ref) {
    auto *copy = oru_md_new_ref_meta(ref.name, ref.prop_meta);
    if (copy != nullptr) {
        copy->is_child = ref.is_child;
        copy->target_mr = ref.target_mr;
    }
    return copy;
}

template <class Record>
void push_front(Record *&first, Record *record) {
    record->next = first;
    first = record;
}

// Keys stand ahead of the implementation's own, in the order of the library, in the record's chain
// and among the properties.
void merge_keys(ORUMdAttrMeta *library, ORUMdAttrMeta *&own, ORUDoMrMeta *description) {
    ORUMdAttrMeta *copies = nullptr;
    int32_t index = 0;
    for (auto *key = library; key != nullptr; key = key->next) {
        if (oru::find_named(own, key->name) != nullptr)
            continue;
        auto *copy = copy_attr(*key);
        if (copy == nullptr)
            continue;
        oru::append_record(copies, copy);
        oru_do_mr_meta_add_prop_meta_at_index(description, copy->prop_meta, index++);
    }
    oru::chain_end(copies) = own;
    own = copies;
}

void merge_refs(const ORUMdMrMeta &library, ORUMdMrMeta &impl) {
    for (auto *ref = library.refs; ref != nullptr; ref = ref->next) {
        if (oru::find_named(impl.refs, ref->name) != nullptr)
            continue;
        auto *copy = copy_ref(*ref);
        if (copy == nullptr)
            continue;
        push_front(impl.refs, copy);
        oru_do_mr_meta_add_prop_meta(impl.do_mr_meta, copy->prop_meta);
    }
}

void merge_config(const ORUMdMrMeta &library, ORUMdMrMeta &impl) {
    for (auto *attr = library.cd_attrs; attr != nullptr; attr = attr->next) {
        if (oru::find_named(impl.cd_attrs, attr->name) != nullptr)
            continue;
        auto *copy = copy_attr(*attr);
        if (copy == nullptr)
            continue;
        push_front(impl.cd_attrs, copy);
        oru_do_mr_meta_add_prop_meta(impl.do_mr_meta, copy->prop_meta);
    }
}

// A copy takes the place of the record that was first until then, whose property stays in the
// description. Packages in use count on the record being gone.
void merge_oper(const ORUMdMrMeta &library, ORUMdMrMeta &impl) {
    for (auto *attr = library.od_attrs; attr != nullptr; attr = attr->next) {
        if (oru::find_named(impl.od_attrs, attr->name) != nullptr)
            continue;
        auto *copy = copy_attr(*attr);
        if (copy == nullptr)
            continue;
        if (auto *replaced = impl.od_attrs; replaced != nullptr) {
            impl.od_attrs = replaced->next;
            oru_md_delete_attr_meta(replaced);
        }
        push_front(impl.od_attrs, copy);
        oru_do_mr_meta_add_prop_meta(impl.do_mr_meta, copy->prop_meta);
    }
}

}  // namespace

void oru::merge_library(const ORUMdMrMeta &library, ORUMdMrMeta &impl) {
    merge_keys(library.primary_keys, impl.primary_keys, impl.do_mr_meta);
    merge_keys(library.secondary_keys, impl.secondary_keys, impl.do_mr_meta);
    merge_refs(library, impl);
    merge_config(library, impl);
    merge_oper(library, impl);
}
