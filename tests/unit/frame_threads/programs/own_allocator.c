/* A program that brings the tagged allocator: the library uses it and no other, and gives back
   nothing but blocks. */
#include <oru/dtree.h>
#include <oru/error.h>
#include <oru/lib.h>
#include <oru/md.h>
#include <oru/strbuf.h>
#include <oru/util.h>
#include <oruplatform/poolheap.h>
#include <string.h>

#include "check.h"

static int taken = 0;
static int given = 0;
static uint32_t component = 0;
static uint32_t last_tag = 0;
static int empty_now = 0;

static void *count(uint32_t tag, void *block) {
    last_tag = tag;
    if (block != NULL)
        ++taken;
    return block;
}

/* Counts down to the one call that gets no block. */
static int is_empty(void) {
    return empty_now != 0 && --empty_now == 0;
}

void poolheap_init(uint32_t number, const char *(*tag_name)(uint32_t tag)) {
    component = number;
    CHECK(strcmp(tag_name(number), "oruapi") == 0);
}

void *ph_malloc_named(uint32_t tag, size_t size) {
    return is_empty() ? NULL : count(tag, malloc(size));
}

void *ph_calloc_named(uint32_t tag, size_t n, size_t size) {
    return count(tag, calloc(n, size));
}

void *ph_realloc_named(uint32_t tag, void *block, size_t size) {
    last_tag = tag;
    return realloc(block, size);
}

char *ph_strdup_named(uint32_t tag, const char *text) {
    return count(tag, strdup(text));
}

int32_t ph_free_named(void *block) {
    CHECK(block != NULL);
    ++given;
    free(block);
    return 0;
}

/* What was never had is not given back. */
static void check_gives_back_blocks(void) {
    ORUDoDtree *tree = oru_do_dtree_new_str("tree");
    int nth;
    for (nth = 1; nth <= 2; ++nth) {
        ORUDoError *error = NULL;
        empty_now = nth;
        CHECK(oru_do_dtree_get_node_by_path(tree, "a/b", &error) == NULL);
        CHECK(oru_do_error_get_code(error) == 10002);
        oru_do_error_deref(error);
    }
    oru_do_dtree_deref(tree);
    oru_md_mr_meta_list_delete(NULL);
}

int main(void) {
    intptr_t received = 0;
    char *copy;
    ORUDoStrbuf *buf;
    CHECK(oru_lib_init(NULL, 5, &received) == 4711);
    CHECK(component == ORU_TAG_COMPONENT);

    taken = 0;
    buf = oru_do_strbuf_new();
    CHECK(taken == 2); /* the record and its storage */
    CHECK(last_tag == ORU_TAG_COMPONENT + 35);
    oru_do_strbuf_add_tab(buf, 1000);
    oru_do_strbuf_add_tab(buf, 2000);
    CHECK(oru_do_strbuf_get_len(buf) == 3000);
    CHECK(taken == 3);
    CHECK(given == 1);
    oru_do_strbuf_deref(buf);
    CHECK(given == 3);

    copy = oru_util_strdup("text");
    CHECK(taken == 4);
    CHECK(last_tag == ORU_TAG_COMPONENT + 39);
    ph_free_named(copy);

    check_gives_back_blocks();
    return 0;
}
