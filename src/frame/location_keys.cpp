// What answers for a back end that knows no location keys. The two have a unit of their own, since
// calls to them may be taken over by definitions in front of the library. The first reports through
// its result, the second through its status argument; callers rely on both.
#include "frame/require.h"
#include "frame/trace.h"
#include "oru/lib.h"
#include "oru/rc.h"

intptr_t _oru_location_get_location_keys(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t,
                                         intptr_t) {
    ORU_TRACE(oru::Level::failure, "_oru location_get_location_keys is not defined");
    return ORU_RC_UNSUPPORTED_FEATURE;
}

intptr_t _oru_location_from_location_keys(intptr_t, int32_t *status, intptr_t, intptr_t, intptr_t,
                                          intptr_t) {
    ORU_REQUIRE(status);
    ORU_TRACE(oru::Level::failure, "_oru location_from_location_keys is not defined");
    *status = ORU_RC_UNSUPPORTED_FEATURE;
    return -1;
}
