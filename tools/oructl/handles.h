// Counted objects of the library, owned by scope.
#ifndef ORU_TOOLS_ORUCTL_HANDLES_H
#define ORU_TOOLS_ORUCTL_HANDLES_H

#include <oru/oru.h>

#include <memory>
#include <new>
#include <string>

namespace oructl {

template <auto deref>
struct Release {
    template <class Object>
    void operator()(Object *object) const {
        deref(object);
    }
};

using Buffer = std::unique_ptr<ORUDoStrbuf, Release<oru_do_strbuf_deref>>;
using Dtree = std::unique_ptr<ORUDoDtree, Release<oru_do_dtree_deref>>;
using Error = std::unique_ptr<ORUDoError, Release<oru_do_error_deref>>;
using Name = std::unique_ptr<ORUDoName, Release<oru_do_name_deref>>;
using NameList = std::unique_ptr<ORUDoNlist, Release<oru_do_nlist_deref>>;
using NameValueList = std::unique_ptr<ORUDoNvlist, Release<oru_do_nvlist_deref>>;
using Operations = std::unique_ptr<ORUDoConfigOps, Release<oru_do_config_ops_deref>>;
using Properties = std::unique_ptr<ORUDoProperties, Release<oru_do_properties_deref>>;
using Table = std::unique_ptr<ORUDoVtable, Release<oru_do_vtable_deref>>;
using Uri = std::unique_ptr<ORUDoUri, Release<oru_do_uri_deref>>;
using Value = std::unique_ptr<ORUDoValue, Release<oru_do_value_deref>>;
using ValueList = std::unique_ptr<ORUDoVlist, Release<oru_do_vlist_deref>>;

// A new object that is there: null means that memory ran out.
template <class Owner>
Owner made(typename Owner::pointer object) {
    if (object == nullptr)
        throw std::bad_alloc();
    return Owner(object);
}

// Walks a collection: `for (EachProperty each(props); ORUDoProperty *property = each();)`.
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

// What `write` puts into a buffer.
template <class Write>
std::string written(Write &&write) {
    const Buffer buf = made<Buffer>(oru_do_strbuf_new());
    write(buf.get());
    if (oru_do_strbuf_get_err(buf.get()) != ORU_OK)
        throw std::bad_alloc();
    const char *text = oru_do_strbuf_to_string(buf.get());
    return text != nullptr ? text : "";
}

}  // namespace oructl

#endif
