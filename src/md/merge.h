#ifndef ORU_SRC_MD_MERGE_H
#define ORU_SRC_MD_MERGE_H

#include "oru/md.h"

namespace oru {

// Gives an implementation everything of its library resource that it does not define itself.
void merge_library(const ORUMdMrMeta &library, ORUMdMrMeta &impl);

}  // namespace oru

#endif
