/* On a platform layer without a threshold every message is sent, and readers do without places. */
#include <oru/json.h>
#include <oru/lib.h>
#include <oru/strbuf.h>
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
    CHECK(module_id == 5);
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
    oru_do_strbuf_add_tab(buf, 1000);
    CHECK(messages == 2);
    CHECK(last_level == 0x7000000);
    CHECK(strcmp(last_text, "oru_do_strbuf resize new_size=1001") == 0);
    oru_do_strbuf_deref(buf);
    CHECK(messages == 3);

    oru_do_json_delete_ctx_data(oru_do_json_parse("{\"%int\":1}", 10, 0));
    return 0;
}
