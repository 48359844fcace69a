#ifndef ORU_SRC_FRAME_REGEXP_COST_H
#define ORU_SRC_FRAME_REGEXP_COST_H

namespace oru {

// Whether compiling the pattern would take memory or stack without measure: the C library writes
// out every repeat count, those within repeated groups once for each, and descends into groups.
bool regexp_is_too_costly(const char *pattern, bool extended);

}  // namespace oru

#endif
