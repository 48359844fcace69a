// Where a reader stands in its source text, for tools that print `file:line: element: words`. The
// tracer of the platform keeps it beside the messages; one that cannot is left alone.
#ifndef ORU_SRC_FRAME_PLACE_H
#define ORU_SRC_FRAME_PLACE_H

#include "oruplatform/tracelet.h"

extern "C" {
void tracelet_place_push(const char *file, int32_t line, const char *element) __attribute__((weak));
void tracelet_place_pop(void) __attribute__((weak));
}

namespace oru {

// Tells the place for a scope. The texts are lent.
class Place {
  public:
    Place(const char *file, int32_t line, const char *element) {
        if (&tracelet_place_push != nullptr)
            tracelet_place_push(file, line, element);
    }
    ~Place() {
        if (&tracelet_place_pop != nullptr)
            tracelet_place_pop();
    }
    Place(const Place &) = delete;
    Place &operator=(const Place &) = delete;
};

}  // namespace oru

#endif
