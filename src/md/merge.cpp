// The merge of a library resource into one that implements it. Nothing is inherited at lookup time.
#include "md/merge.h"

#include "frame/trace.h"
#include "md/records.h"
#include "oru/mr_meta.h"

namespace {

constexpr int32_t kAtEnd = -1;

ORUMdAttrMeta *copy_of(const ORUMdAttrMeta &attr) {
    auto *copy = oru_md_new_attr_meta(attr.name, attr.group_name, attr.prop_meta);
    if (copy != nullptr)
        copy->typedef_meta = attr.typedef_meta;
    return copy;
}

ORUMdRefMeta *copy_of(const ORUMdRefMeta &ref) {
    auto *copy = oru_md_new_ref_meta(ref.name, ref.prop_meta);
    if (copy != nullptr) {
        copy->is_child = ref.is_child;
        copy->target_mr = ref.target_mr;
    }
    return copy;
}

void release(ORUMdAttrMeta *attr) {
    oru_md_delete_attr_meta(attr);
}

void release(ORUMdRefMeta *ref) {
    oru_md_delete_ref_meta(ref);
}

bool describe(const ORUMdMrMeta &impl, ORUDoPropMeta *prop, int32_t index) {
    return index == kAtEnd
               ? oru_do_mr_meta_add_prop_meta(impl.do_mr_meta, prop) > 0
               : oru_do_mr_meta_add_prop_meta_at_index(impl.do_mr_meta, prop, index) > 0;
}

// A copy for the implementation, whose property stands in its description then. Null without
// memory: resolution goes on without this one, and says so.
template <class Record>
Record *take(const Record &record, const ORUMdMrMeta &impl, int32_t index) {
    Record *copy = copy_of(record);
    if (copy != nullptr && describe(impl, copy->prop_meta, index))
        return copy;
    release(copy);
    ORU_TRACE(oru::Level::failure, "Failed to merge %s into %s\n", oru::text_of(record.name),
              oru::text_of(impl.name));
    return nullptr;
}

template <class Record>
void push_front(Record *&first, Record *record) {
    record->next = first;
    first = record;
}

// Keys stand ahead of the implementation's own, in the order of the library, in the record's chain
// and among the properties.
void merge_keys(const ORUMdAttrMeta *library, ORUMdAttrMeta *&own, const ORUMdMrMeta &impl) {
    ORUMdAttrMeta *copies = nullptr;
    int32_t index = 0;
    for (auto *key = library; key != nullptr; key = key->next) {
        if (oru::find_named(own, key->name) != nullptr)
            continue;
        if (auto *copy = take(*key, impl, index)) {
            oru::append_record(copies, copy);
            ++index;
        }
    }
    oru::chain_end(copies) = own;
    own = copies;
}

// References and configuration come in reverse, their properties behind all others.
template <class Record>
void merge_in_front(const Record *library, Record *&own, const ORUMdMrMeta &impl) {
    for (auto *record = library; record != nullptr; record = record->next) {
        if (oru::find_named(own, record->name) != nullptr)
            continue;
        if (auto *copy = take(*record, impl, kAtEnd))
            push_front(own, copy);
    }
}

// A copy takes the place of the record that was first until then, whose property stays in the
// description. Packages in use count on the record being gone.
void merge_oper(const ORUMdMrMeta &library, ORUMdMrMeta &impl) {
    for (auto *attr = library.od_attrs; attr != nullptr; attr = attr->next) {
        if (oru::find_named(impl.od_attrs, attr->name) != nullptr)
            continue;
        auto *copy = take(*attr, impl, kAtEnd);
        if (copy == nullptr)
            continue;
        if (auto *replaced = impl.od_attrs; replaced != nullptr) {
            impl.od_attrs = replaced->next;
            oru_md_delete_attr_meta(replaced);
        }
        push_front(impl.od_attrs, copy);
    }
}

}  // namespace

void oru::merge_library(const ORUMdMrMeta &library, ORUMdMrMeta &impl) {
    merge_keys(library.primary_keys, impl.primary_keys, impl);
    merge_keys(library.secondary_keys, impl.secondary_keys, impl);
    merge_in_front<ORUMdRefMeta>(library.refs, impl.refs, impl);
    merge_in_front<ORUMdAttrMeta>(library.cd_attrs, impl.cd_attrs, impl);
    merge_oper(library, impl);
}
