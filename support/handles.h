// Counted objects of the library, owned by scope, for code in C++ on the public headers. Where
// memory runs out it throws std::bad_alloc.
//
// Back ends and programs take all of it into a namespace of their own:
//
//     namespace tool {
//     using namespace handles;
//     }
#ifndef ORU_SUPPORT_HANDLES_H
#define ORU_SUPPORT_HANDLES_H

#include <oru/oru.h>

#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace handles {

// ---- Owners ----

// One reference, or none. A copy is one reference more.
template <class T, T *(*ref)(T *), void (*deref)(T *)>
class Handle {
  public:
    Handle() = default;
    // Takes over the caller's reference.
    explicit Handle(T *object) : object_(object) {}
    ~Handle() { deref(object_); }
    Handle(const Handle &other) : object_(ref(other.object_)) {}
    Handle(Handle &&other) noexcept : object_(other.release()) {}
    Handle &operator=(Handle other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    // One more reference to an object that somebody else holds.
    static Handle share(T *object) { return Handle(ref(object)); }

    T *get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    friend bool operator==(const Handle &handle, std::nullptr_t) { return !handle; }

    // Takes over another reference in the place of this one.
    void reset(T *object = nullptr) { *this = Handle(object); }
    // Gives the reference to the caller.
    T *release() { return std::exchange(object_, nullptr); }

  private:
    T *object_ = nullptr;
};

using Buffer = Handle<ORUDoStrbuf, oru_do_strbuf_ref, oru_do_strbuf_deref>;
using ConstraintList =
    Handle<ORUDoConstraintList, oru_do_constraint_list_ref, oru_do_constraint_list_deref>;
using Dtree = Handle<ORUDoDtree, oru_do_dtree_ref, oru_do_dtree_deref>;
using Error = Handle<ORUDoError, oru_do_error_ref, oru_do_error_deref>;
using Name = Handle<ORUDoName, oru_do_name_ref, oru_do_name_deref>;
using NameList = Handle<ORUDoNlist, oru_do_nlist_ref, oru_do_nlist_deref>;
using NameValueList = Handle<ORUDoNvlist, oru_do_nvlist_ref, oru_do_nvlist_deref>;
using Operations = Handle<ORUDoConfigOps, oru_do_config_ops_ref, oru_do_config_ops_deref>;
using Properties = Handle<ORUDoProperties, oru_do_properties_ref, oru_do_properties_deref>;
using PropertiesList =
    Handle<ORUDoPropertiesList, oru_do_properties_list_ref, oru_do_properties_list_deref>;
using PropertyMeta = Handle<ORUDoPropMeta, oru_do_prop_meta_ref, oru_do_prop_meta_deref>;
using Table = Handle<ORUDoVtable, oru_do_vtable_ref, oru_do_vtable_deref>;
using Uri = Handle<ORUDoUri, oru_do_uri_ref, oru_do_uri_deref>;
using Value = Handle<ORUDoValue, oru_do_value_ref, oru_do_value_deref>;
using ValueList = Handle<ORUDoVlist, oru_do_vlist_ref, oru_do_vlist_deref>;
using WhereCondition = Handle<ORUDoCondition, oru_do_condition_ref, oru_do_condition_deref>;

// Releases what is not counted, as the deleter of a std::unique_ptr.
template <auto release>
struct Release {
    template <class Object>
    void operator()(Object *object) const {
        release(object);
    }
};

// A new object that is there: null means that memory ran out.
template <class Owner, class T>
Owner made(T *object) {
    if (object == nullptr)
        throw std::bad_alloc();
    return Owner(object);
}

// The metadata of the process, for reading.
class MetadataLock {
  public:
    MetadataLock() { oru_md_rdlock(); }
    ~MetadataLock() { oru_md_unlock(); }
    MetadataLock(const MetadataLock &) = delete;
    MetadataLock &operator=(const MetadataLock &) = delete;
};

// ---- Collections ----

// Walks a collection, which may be null for an empty one:
//
//     for (EachName each(list); ORUDoName *name = each();)
template <class Collection, class Element, void (*begin)(Collection *, ORUDoIter *),
          int32_t (*has_next)(ORUDoIter *), Element *(*next)(ORUDoIter *)>
class Each {
  public:
    explicit Each(Collection *collection) : is_empty_(collection == nullptr) {
        oru_do_iter_init(&iter_);
        if (!is_empty_)
            begin(collection, &iter_);
    }
    Element *operator()() { return !is_empty_ && has_next(&iter_) != 0 ? next(&iter_) : nullptr; }

  private:
    bool is_empty_;
    ORUDoIter iter_;
};

using EachChild = Each<ORUDoDtree, ORUDoDtree, oru_do_dtree_child_iter, oru_do_dtree_has_next_child,
                       oru_do_dtree_get_next_child>;
using EachItem = Each<ORUDoNvlist, ORUDoNvlistItem, oru_do_nvlist_iter, oru_do_nvlist_has_next,
                      oru_do_nvlist_get_next>;
using EachName =
    Each<ORUDoNlist, ORUDoName, oru_do_nlist_iter, oru_do_nlist_has_next, oru_do_nlist_get_next>;
using EachOperation = Each<ORUDoConfigOps, ORUDoConfigOp, oru_do_config_ops_iter,
                           oru_do_config_ops_has_next, oru_do_config_ops_get_next>;
using EachProperties = Each<ORUDoPropertiesList, ORUDoProperties, oru_do_properties_list_iter,
                            oru_do_properties_list_has_next, oru_do_properties_list_get_next>;
using EachProperty = Each<ORUDoProperties, ORUDoProperty, oru_do_properties_iter,
                          oru_do_properties_has_next, oru_do_properties_get_next>;
using EachPropErr = Each<ORUDoPropErrs, ORUDoPropErr, oru_do_prop_errs_iter,
                         oru_do_prop_errs_has_next, oru_do_prop_errs_get_next>;
using EachRow = Each<ORUDoVtable, ORUDoVlist, oru_do_vtable_iter, oru_do_vtable_has_next,
                     oru_do_vtable_get_next>;
using EachValue =
    Each<ORUDoVlist, ORUDoValue, oru_do_vlist_iter, oru_do_vlist_has_next, oru_do_vlist_get_next>;

// ---- Texts ----

// A text of the library, which is null for nothing.
inline std::string_view view(const char *text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

// What `write` puts into a buffer.
template <class Write>
std::string written(Write &&write) {
    const Buffer buf = made<Buffer>(oru_do_strbuf_new());
    write(buf.get());
    if (oru_do_strbuf_get_err(buf.get()) != ORU_OK)
        throw std::bad_alloc();
    return std::string(view(oru_do_strbuf_to_string(buf.get())));
}

}  // namespace handles

#endif
