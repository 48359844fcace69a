#include "frame/tags.h"

namespace {

constexpr const char *kTagNames[] = {
#define ORU_TAG_NAME(identifier, name) name,
    ORU_TAG_LIST(ORU_TAG_NAME)
#undef ORU_TAG_NAME
};

constexpr uint32_t kComponentMask = 0x7ff00000;
constexpr uint32_t kIndexMask = 0xfffff;

}  // namespace

const char *tag_name_lookup(uint32_t tag) {
    if ((tag & kComponentMask) != ORU_TAG_COMPONENT)
        return "error-wrong-component";
    const uint32_t index = tag & kIndexMask;
    return index < sizeof kTagNames / sizeof *kTagNames ? kTagNames[index] : "oruapi-invalid";
}
