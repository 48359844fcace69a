// The locks of the metadata store, which one thread does without.
#ifndef ORU_TESTS_FUZZ_NO_LOCKS_H
#define ORU_TESTS_FUZZ_NO_LOCKS_H

#include "oru/thread.h"

extern "C" {
ORU_API int32_t oru_rwlock_wrlock(oru_rwlock_t *) {
    return 0;
}
ORU_API int32_t oru_rwlock_unlock(oru_rwlock_t *) {
    return 0;
}
}

#endif
