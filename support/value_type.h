// Which values an attribute or reference holds.
#ifndef SUPPORT_VALUE_TYPE_H
#define SUPPORT_VALUE_TYPE_H

#include <oru/oru.h>

namespace handles {

// The code of one value: references hold addresses, and enumerations and complex types tell theirs
// by their category.
inline int32_t value_type_of(ORUDoPropMeta *meta) {
    ORUDoTypedefMeta *const type = oru_do_prop_meta_get_typedef_meta(meta);
    if (oru_do_prop_meta_get_category(meta) == ORU_PROP_REF)
        return ORU_DO_TYPE_MR_URI;
    if (type == nullptr)
        return oru_do_prop_meta_get_typecode(meta);
    switch (oru_do_typedef_meta_get_category(type)) {
        case ORU_TYPEDEF_ENUM:
            return ORU_DO_TYPE_ENUMERATION;
        case ORU_TYPEDEF_SEQUENCE:
            return ORU_DO_TYPE_SEQUENCE;
        case ORU_TYPEDEF_CHOICE:
            return ORU_DO_TYPE_CHOICE;
        default:
            return oru_do_typedef_meta_get_simple_type(type);
    }
}

}  // namespace handles

#endif
