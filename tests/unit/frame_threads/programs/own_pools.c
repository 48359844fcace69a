/* A program that brings the pools: sizing one asks for it in the library's words, and records come
   from it and go back to it. */
#include <oru/iter.h>
#include <oru/lib.h>
#include <oruplatform/chunk.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include "check.h"

static int pool;
static size_t asked_size;
static intptr_t asked_count;
static uintptr_t asked_flags;
static uint32_t asked_tag;
static int taken = 0;
static int given = 0;
static int refusing = 0;

void *chunk_create_poolheap(size_t element_size, intptr_t count, uintptr_t flags, int32_t one,
                            uint32_t tag) {
    CHECK(one == 1);
    asked_size = element_size;
    asked_count = count;
    asked_flags = flags;
    asked_tag = tag;
    return &pool;
}

/* What is in an element is not told, so nothing of it may show in a record. */
void *chunk_malloc(void *from) {
    void *element = malloc(asked_size);
    CHECK(from == &pool);
    memset(element, 0x5a, asked_size);
    ++taken;
    return element;
}

int32_t chunk_free(void *to, void *element) {
    CHECK(to == &pool);
    if (refusing)
        return 0;
    free(element);
    ++given;
    return 256; /* not zero is success */
}

static void check_end(int number) {
    (void)number;
    _exit(given == 1 ? 0 : 1);
}

int main(void) {
    ORUDoIter *iter;
    CHECK(init_chunk_poolheap_oru_do_iter(5, 0) == &pool);
    CHECK(asked_size == sizeof(ORUDoIter));
    CHECK(asked_count == 5);
    CHECK(asked_flags == 0x101);
    CHECK(asked_tag == ORU_TAG_COMPONENT + 16);
    CHECK(init_chunk_poolheap_oru_do_iter(-1, 0x4010002) == &pool);
    CHECK(asked_count == -1);
    CHECK(asked_flags == 0x4010103);

    iter = oru_do_iter_new();
    CHECK(taken == 1);
    CHECK(iter->ref == 1);
    CHECK(iter->coll_type == -1);
    CHECK(iter->collection == NULL);
    CHECK(iter->next == NULL);
    CHECK(iter->position == 0);
    oru_do_iter_deref(iter);
    CHECK(given == 1);

    iter = oru_do_iter_new();
    signal(SIGABRT, check_end);
    refusing = 1;
    oru_do_iter_deref(iter);
    return 1;
}
