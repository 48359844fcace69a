/* A thread layer that refuses to work stops the initialisation, before any back end is opened. */
#include <oru/lib.h>
#include <oru/thread.h>

#include "check.h"

static int calls = 0;
static int32_t given_setup = -1;

int32_t oruapi_thread_library_init(int32_t have_setup) {
    ++calls;
    given_setup = have_setup;
    return 7;
}

static int32_t set_up(void) {
    return 0;
}

int main(void) {
    intptr_t received = 0;
    CHECK(oru_lib_init(NULL, 5, &received) == 7);
    CHECK(calls == 1);
    CHECK(given_setup == 0);
    CHECK(oru_lib_init(set_up, 5, &received) == 7);
    CHECK(given_setup != 0);
    CHECK(oru_lib_init(NULL, 5, NULL) == 7); /* earlier than the context is looked at */
    CHECK(g_lib_init == NULL);
    CHECK(g_lib_shutdown == NULL);
    CHECK(received == 0);
    return 0;
}
