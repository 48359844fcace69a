// Whether values fit the types of attributes.
#ifndef ORU_SRC_MD_TYPE_CHECK_H
#define ORU_SRC_MD_TYPE_CHECK_H

#include "oru/md.h"

namespace oru {

// 0, or the code of what is wrong. A null value fits.
int32_t check_attr_type(const ORUMdAttrMeta &attr, ORUDoValue *value);

}  // namespace oru

#endif
