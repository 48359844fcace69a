// Owns one reference of an object of the C interface for a scope.
#ifndef ORU_TESTS_SUPPORT_OWNED_H
#define ORU_TESTS_SUPPORT_OWNED_H

#include <memory>

#include "oru/name.h"
#include "oru/nvlist.h"
#include "oru/strbuf.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace oru::test {

template <auto deref>
struct Deref {
    template <class Object>
    void operator()(Object *object) const {
        deref(object);
    }
};

using Name = std::unique_ptr<ORUDoName, Deref<oru_do_name_deref>>;
using Nvlist = std::unique_ptr<ORUDoNvlist, Deref<oru_do_nvlist_deref>>;
using Strbuf = std::unique_ptr<ORUDoStrbuf, Deref<oru_do_strbuf_deref>>;
using Uri = std::unique_ptr<ORUDoUri, Deref<oru_do_uri_deref>>;
using Value = std::unique_ptr<ORUDoValue, Deref<oru_do_value_deref>>;
using Vlist = std::unique_ptr<ORUDoVlist, Deref<oru_do_vlist_deref>>;

}  // namespace oru::test

#endif
