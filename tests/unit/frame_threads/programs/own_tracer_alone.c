/* A program that brings the tracer and no threshold: every message comes to it. */
#include <oru/lib.h>
#include <oru/strbuf.h>
#include <oru/util.h>
#include <oruplatform/tracelet.h>
#include <stdarg.h>
#include <string.h>

#include "check.h"

static int messages = 0;
static uint32_t last_level = 1;
static char last_text[200];

int32_t tracelet_emit(const char *const *formats, uint32_t index, uint16_t module_id,
                      uint32_t level, ...) {
    va_list args;
    va_start(args, level);
    vsnprintf(last_text, sizeof last_text, formats[index], args);
    va_end(args);
    CHECK(module_id == g_oruapi_trace_module_id);
    last_level = level;
    ++messages;
    return 0;
}

int main(void) {
    char expected[100];
    ORUDoStrbuf *buf;
    CHECK(oruapi_trace_init() == 0);

    buf = oru_do_strbuf_new();
    snprintf(expected, sizeof expected, "oru ref oru_do_strbuf %p 1", (void *)buf);
    CHECK(messages == 1);
    CHECK(last_level == 0x8000000);
    CHECK(strcmp(last_text, expected) == 0);
    oru_do_strbuf_deref(buf);
    CHECK(messages == 2);

    CHECK(verify_boolean_size(1) == 0);
    CHECK(messages == 3);
    CHECK(last_level == 0x3000000);
    CHECK(strcmp(last_text, "boolean size mismatch 1 4") == 0);
    return 0;
}
