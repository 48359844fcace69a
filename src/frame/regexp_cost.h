#ifndef ORU_SRC_FRAME_REGEXP_COST_H
#define ORU_SRC_FRAME_REGEXP_COST_H

namespace oru {

// Whether compiling the pattern would take memory, stack or time without measure: the C library
// writes out every repeat count, those within repeated groups once for each, descends into groups,
// and follows all ways through elements that may match nothing.
bool regexp_is_too_costly(const char *pattern, bool extended);

}  // namespace oru

#endif
