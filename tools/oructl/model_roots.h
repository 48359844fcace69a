// Where the resources of a model begin.
#ifndef ORU_TOOLS_ORUCTL_MODEL_ROOTS_H
#define ORU_TOOLS_ORUCTL_MODEL_ROOTS_H

#include <vector>

#include "model.h"

namespace oructl {

// The resources that no reference to children leads to. Library resources are none: by themselves
// they only lend what they have.
std::vector<ORUMdMrMeta *> find_roots(const Model &model);

}  // namespace oructl

#endif
