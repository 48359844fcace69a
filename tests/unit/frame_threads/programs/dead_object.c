/* A program whose memory outlives its use: what happens to the count of an object that is gone. */
#include <oru/lib.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>
#include <signal.h>
#include <stdarg.h>
#include <string.h>
#include <unistd.h>

#include "check.h"

uint32_t tracelet_threshold = 0x8000000;

static char last_text[200];
static uint32_t last_level;
static ORUDoValue *val;
static int given = 0;

/* Nothing is given back, so that the records stay as they are. */
int32_t ph_free_named(void *block) {
    if (block == val)
        ++given;
    return 0;
}

int32_t tracelet_emit(const char *const *formats, uint32_t index, uint16_t module_id,
                      uint32_t level, ...) {
    va_list args;
    (void)module_id;
    va_start(args, level);
    vsnprintf(last_text, sizeof last_text, formats[index], args);
    va_end(args);
    last_level = level;
    return 0;
}

static int traced(uint32_t level, const char *format, const void *object, int32_t count) {
    char expected[200];
    snprintf(expected, sizeof expected, format, object, count);
    return level == last_level && strcmp(last_text, expected) == 0;
}

static void check_end(int number) {
    (void)number;
    CHECK(traced(0, "Fatal problem in oru_do_value deref handling %p\n", val, 0));
    CHECK(given == 1);
    _exit(0);
}

/* How a URI begins. Its count is signed, and one below zero is left alone as well. */
struct uri_head {
    void *texts_and_segments[5];
    int32_t ref_count;
};

static void check_corrupt_uri(void) {
    ORUDoUri *uri = oru_do_uri_new("/a");
    struct uri_head *head = (struct uri_head *)uri;
    CHECK(head->ref_count == 1);
    head->ref_count = -3;
    CHECK(oru_do_uri_ref(uri) == uri);
    CHECK(head->ref_count == -3);
    CHECK(traced(0x8000000, "oru ref oru_do_uri %p %u", uri, -3));
}

int main(void) {
    check_corrupt_uri();
    signal(SIGABRT, check_end);
    val = oru_do_value_new_int(5);
    CHECK(oru_do_value_ref(val) == val);
    CHECK(traced(0x8000000, "oru ref oru_do_value %p %u", val, 2));
    oru_do_value_deref(val);
    CHECK(given == 0);
    oru_do_value_deref(val);
    CHECK(traced(0x8000000, "oru deref oru_do_value %p %u", val, 1));
    CHECK(given == 1);

    /* Zero is terminal, and the pointer comes back as if nothing were wrong. */
    CHECK(oru_do_value_ref(val) == val);
    CHECK(traced(0x8000000, "oru ref oru_do_value %p %u", val, 0));
    oru_do_value_deref(val);
    return 1;
}
