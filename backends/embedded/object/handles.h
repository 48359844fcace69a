/* Counted objects of the library, owned by scope. */
#ifndef EMBEDDED_HANDLES_H
#define EMBEDDED_HANDLES_H

#include <oru/oru.h>

#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace embedded {

/* One reference, released at the end. */
template <typename T, T *(*ref)(T *), void (*deref)(T *)>
class Handle {
  public:
    Handle() = default;
    /* Takes over the caller's reference. */
    explicit Handle(T *object) : object_(object) {}
    ~Handle() { deref(object_); }
    Handle(const Handle &other) : object_(ref(other.object_)) {}
    Handle(Handle &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Handle &operator=(Handle other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    /* One more reference to an object that somebody else holds. */
    static Handle share(T *object) { return Handle(ref(object)); }

    T *get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

  private:
    T *object_ = nullptr;
};

using Value = Handle<ORUDoValue, oru_do_value_ref, oru_do_value_deref>;
using Name = Handle<ORUDoName, oru_do_name_ref, oru_do_name_deref>;
using Uri = Handle<ORUDoUri, oru_do_uri_ref, oru_do_uri_deref>;
using Properties = Handle<ORUDoProperties, oru_do_properties_ref, oru_do_properties_deref>;
using NameList = Handle<ORUDoNlist, oru_do_nlist_ref, oru_do_nlist_deref>;
using ValueList = Handle<ORUDoVlist, oru_do_vlist_ref, oru_do_vlist_deref>;
using NameValueList = Handle<ORUDoNvlist, oru_do_nvlist_ref, oru_do_nvlist_deref>;
using Buffer = Handle<ORUDoStrbuf, oru_do_strbuf_ref, oru_do_strbuf_deref>;
using Error = Handle<ORUDoError, oru_do_error_ref, oru_do_error_deref>;
using WhereCondition = Handle<ORUDoCondition, oru_do_condition_ref, oru_do_condition_deref>;
using ConstraintList =
    Handle<ORUDoConstraintList, oru_do_constraint_list_ref, oru_do_constraint_list_deref>;
using PropertyMeta = Handle<ORUDoPropMeta, oru_do_prop_meta_ref, oru_do_prop_meta_deref>;

/* A new object of the library that is there: null means that memory ran out. */
template <typename Owner, typename T>
Owner made(T *object) {
    if (object == nullptr)
        throw std::bad_alloc();
    return Owner(object);
}

/* Sets a property, which tells by nothing else that memory ran out. */
inline void set_property(ORUDoProperties *props, ORUDoName *name, const Value &value) {
    oru_do_properties_set_value_n(props, name, value.get());
    if (oru_do_properties_get_value_n(props, name) != value.get())
        throw std::bad_alloc();
}

/* A table of operations that knows whom it belongs to: callers hand back the address of the table.
 */
template <typename Table, typename Owner>
struct OwnedTable {
    Table table = {};
    Owner *owner = nullptr;

    static Owner &of(Table *table) { return *reinterpret_cast<OwnedTable *>(table)->owner; }
};

/* The metadata of the process, for reading. */
class MetadataLock {
  public:
    MetadataLock() { oru_md_rdlock(); }
    ~MetadataLock() { oru_md_unlock(); }
    MetadataLock(const MetadataLock &) = delete;
    MetadataLock &operator=(const MetadataLock &) = delete;
};

/* A text of the library, which is null for nothing. */
inline std::string_view view(const char *text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

/* Walks a collection of the library: `for (auto at = each_name(list); ORUDoName *name = at();)`. */
template <typename Collection, typename Element, void (*begin)(Collection *, ORUDoIter *),
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

using EachName =
    Each<ORUDoNlist, ORUDoName, oru_do_nlist_iter, oru_do_nlist_has_next, oru_do_nlist_get_next>;
using EachValue =
    Each<ORUDoVlist, ORUDoValue, oru_do_vlist_iter, oru_do_vlist_has_next, oru_do_vlist_get_next>;
using EachProperty = Each<ORUDoProperties, ORUDoProperty, oru_do_properties_iter,
                          oru_do_properties_has_next, oru_do_properties_get_next>;
using EachItem = Each<ORUDoNvlist, ORUDoNvlistItem, oru_do_nvlist_iter, oru_do_nvlist_has_next,
                      oru_do_nvlist_get_next>;
using EachOperation = Each<ORUDoConfigOps, ORUDoConfigOp, oru_do_config_ops_iter,
                           oru_do_config_ops_has_next, oru_do_config_ops_get_next>;

}  // namespace embedded

#endif
