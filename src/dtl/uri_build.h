// The address of a node for one result node above it.
#ifndef ORU_SRC_DTL_URI_BUILD_H
#define ORU_SRC_DTL_URI_BUILD_H

#include "do/dtree.h"
#include "do/uri.h"
#include "do/vlist.h"

namespace oru::dtl {

// Templates that stand for the address of the node above, of its peer and of its parent.
inline constexpr const char kParentUri[] = "$_PARENT_URI_";
inline constexpr const char kPeerUri[] = "$_PEER_URI_";
inline constexpr const char kUriParent[] = "$_URI_PARENT_";

struct UriSource {
    ORUDoUri *uri;  // the template
    ORUDoNvlist *params;
    ORUDoDtree *parent;  // the result node above
    ORUDoDtree *root;
    ORUDoUri *base;  // what relative addresses are relative to, or null
};

// A URI, a list of URI values, or neither; `failed` when the address could not be resolved.
struct BuiltUri {
    Ref<ORUDoUri> uri{};
    Ref<ORUDoVlist> list{};
    bool failed = false;
};

BuiltUri build_uri(const UriSource &source);

// The absolute form where there is a base and the URI is not absolute; otherwise, and when that
// cannot be had, the URI itself.
Ref<ORUDoUri> absolute_uri(Ref<ORUDoUri> uri, ORUDoUri *base);

}  // namespace oru::dtl

#endif
