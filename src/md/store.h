// The store of the process and what its operations share.
#ifndef ORU_SRC_MD_STORE_H
#define ORU_SRC_MD_STORE_H

#include "oru/md.h"

namespace oru {

// Null until the first load. Guarded by `meta_rwlock`.
extern ORUMdMap *md_store;

// Deletes the store of the process.
void md_store_delete();

// The operations that a store carries.
int32_t md_add_pkg(ORUMdMap *store, ORUMdPkgMeta *package);
int32_t md_remove_pkg(ORUMdMap *store, ORUMdPkgMeta *package);
ORUMdPkgMeta *md_get_pkg(ORUMdMap *store, const char *name, const char *version);
int32_t md_resolve_refs(ORUMdMap *store, int32_t pass);

}  // namespace oru

#endif
