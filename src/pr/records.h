// Records of the provider framework: they are not counted and come from the tagged heap.
#ifndef ORU_SRC_PR_RECORDS_H
#define ORU_SRC_PR_RECORDS_H

#include "frame/tags.h"
#include "oruplatform/poolheap.h"

namespace oru::pr {

// Null when memory runs out.
template <class Record>
Record *make_zeroed() {
    return static_cast<Record *>(ph_calloc_named(tag_word(Tag::base), 1, sizeof(Record)));
}

// Null is ignored.
inline void free_record(void *record) {
    if (record != nullptr)
        ph_free_named(record);
}

}  // namespace oru::pr

#endif
