/* A platform layer with nothing that is optional: neither a threshold of messages nor places. What
   the program does not come to need ends it. */
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>
#include <stdlib.h>
#include <string.h>

void poolheap_init(uint32_t component, const char *(*tag_name)(uint32_t tag)) {
    (void)component;
    (void)tag_name;
}

void *ph_malloc_named(uint32_t tag, size_t size) {
    (void)tag;
    return malloc(size);
}

void *ph_calloc_named(uint32_t tag, size_t count, size_t size) {
    (void)tag;
    return calloc(count, size);
}

void *ph_realloc_named(uint32_t tag, void *block, size_t size) {
    (void)tag;
    return realloc(block, size);
}

char *ph_strdup_named(uint32_t tag, const char *text) {
    (void)tag;
    return strdup(text);
}

int32_t ph_free_named(void *block) {
    free(block);
    return 0;
}

int32_t tracelet_module_init_fn(const char *name, uint16_t *module_id, void *module_context) {
    (void)name;
    (void)module_context;
    *module_id = 5;
    return 0;
}

#define NOT_NEEDED(name)      \
    ORU_API void name(void);  \
    ORU_API void name(void) { \
        abort();              \
    }

NOT_NEEDED(balanced_tree_allocate_object)
NOT_NEEDED(balanced_tree_free_object)
NOT_NEEDED(balanced_tree_init)
NOT_NEEDED(balanced_tree_insert)
NOT_NEEDED(balanced_tree_search)
NOT_NEEDED(balanced_tree_shutdown)
NOT_NEEDED(balanced_tree_walk)
NOT_NEEDED(chunk_create_poolheap)
NOT_NEEDED(chunk_free)
NOT_NEEDED(chunk_malloc)
NOT_NEEDED(fifo_dequeue)
NOT_NEEDED(fifo_enqueue)
NOT_NEEDED(fifo_get_next)
NOT_NEEDED(fifo_init)
NOT_NEEDED(fifo_requeue)
NOT_NEEDED(fifo_unqueue)
NOT_NEEDED(halden_dlopen)
NOT_NEEDED(halden_location_to_str)
NOT_NEEDED(halden_resolve_local)
NOT_NEEDED(hashAdd)
NOT_NEEDED(hashCloseWithFunction)
NOT_NEEDED(hashFind)
NOT_NEEDED(hashMake)
NOT_NEEDED(hashMakeTable)
NOT_NEEDED(hashRemove)
NOT_NEEDED(hashWalk)
NOT_NEEDED(hashWalkWithContext)
