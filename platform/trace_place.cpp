#include <cstdlib>

#include "platform/thread_block.h"
#include "platform/trace_output.h"

namespace oru::platform {

// `depth` counts all pushes, so that pops match; only the first ones are kept.
struct PlaceStack {
    int32_t depth;
    tracelet_place_t places[TRACELET_MAX_PLACES];
};

namespace {

PlaceStack *place_stack() {
    if (t_block.places == nullptr && arm_thread_block()) {
        t_block.places = static_cast<PlaceStack *>(calloc(1, sizeof(PlaceStack)));
    }
    return t_block.places;
}

}  // namespace

const tracelet_place_t *innermost_place() {
    const PlaceStack *stack = t_block.places;
    if (stack == nullptr || stack->depth == 0) {
        return nullptr;
    }
    const int32_t kept = stack->depth < TRACELET_MAX_PLACES ? stack->depth : TRACELET_MAX_PLACES;
    return &stack->places[kept - 1];
}

void release_places(ThreadBlock &block) {
    free(block.places);
    block.places = nullptr;
}

}  // namespace oru::platform

using namespace oru::platform;

void tracelet_place_push(const char *file, int32_t line, const char *element) {
    PlaceStack *stack = place_stack();
    if (stack == nullptr) {
        return;
    }
    if (stack->depth < TRACELET_MAX_PLACES) {
        stack->places[stack->depth] = {.file = file, .line = line, .element = element};
    }
    stack->depth++;
}

void tracelet_place_pop(void) {
    if (t_block.places != nullptr && t_block.places->depth > 0) {
        t_block.places->depth--;
    }
}
