#ifndef ORU_SRC_MD_FORGET_H
#define ORU_SRC_MD_FORGET_H

#include "oru/md.h"

namespace oru {

// Takes the packages of a bundle that was taken out of the store, and is about to be deleted, out
// of everything that still leads to them.
void forget_bundle(ORUMdMap &store, ORUMdPkgBundle &bundle);

}  // namespace oru

#endif
