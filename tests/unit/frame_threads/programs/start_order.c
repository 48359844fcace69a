/* A program that watches the library come up: which layer is called when, and with what. */
#include <dlfcn.h>
#include <oru/lib.h>
#include <oru/thread.h>
#include <oruplatform/halden.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>
#include <string.h>

#include "check.h"

uint32_t tracelet_threshold = 0x8000000;

static char events[32];
static const char *opened;
static int32_t opened_with;

static void event(const char *name) {
    strcat(events, name);
}

void poolheap_init(uint32_t component, const char *(*tag_name)(uint32_t tag)) {
    CHECK(component == 0x2900000);
    CHECK(tag_name == tag_name_lookup);
    event("P");
}

/* Fails, which stops nothing. */
int32_t tracelet_module_init_fn(const char *name, uint16_t *module_id, void *module_context) {
    CHECK(strcmp(name, "oruapi") == 0);
    CHECK(module_id == &g_oruapi_trace_module_id);
    CHECK(module_context != NULL);
    *module_id = 77;
    event("M");
    return 12;
}

int32_t tracelet_emit(const char *const *formats, uint32_t index, uint16_t module_id,
                      uint32_t level, ...) {
    CHECK(module_id == 77);
    if (strcmp(formats[index], "setting oru props max size before hash %d") == 0) {
        CHECK(level == 0x5000000);
        event("L");
    }
    return 0;
}

int32_t oruapi_thread_library_init(int32_t have_setup) {
    event(have_setup != 0 ? "T" : "t");
    return 0;
}

void *halden_dlopen(const char *file, int32_t flags) {
    opened = file;
    opened_with = flags;
    event("O");
    return dlopen(file, flags);
}

static int32_t set_up(void) {
    event("S");
    return 1;
}

static const char *started(int32_t expected, int32_t (*thread_setup)(void), void *backend_ctx) {
    events[0] = '\0';
    CHECK(oru_lib_init(thread_setup, 5, backend_ctx) == expected);
    return events;
}

int main(void) {
    intptr_t received = 0;
    CHECK(oruapi_trace_init() == 12);
    setenv("ORU_PROPS_MAX_SIZE_BEFORE_HS", "9", 1);
    CHECK(strcmp(started(10000, set_up, NULL), "PMSTL") == 0);
    CHECK(strcmp(started(4711, set_up, &received), "PMSTLO") == 0);
    CHECK(opened == getenv("ORU_DEFAULT_LIB")); /* the pointer itself, no copy */
    CHECK(opened_with == 0x102);
    unsetenv("ORU_PROPS_MAX_SIZE_BEFORE_HS");
    CHECK(strcmp(started(4711, NULL, &received), "PMt") == 0);
    CHECK(received == 10);
    return 0;
}
