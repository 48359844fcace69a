/*
 * Balanced tree of objects in the order of a comparison. The storage of objects belongs to the
 * tree. No locking: a tree belongs to one thread at a time.
 *
 * The comparison gives BALANCED_TREE_EQUAL, _LESS when its first argument comes before the second,
 * or _GREATER. Its first argument is always the new object or the key that is looked for, its
 * second one an object of the tree. Any other value is its failure and ends the operation with 22,
 * tree unchanged. An inconsistent comparison leaves objects in an unexpected order and does no
 * other harm.
 *
 * Results: 0; 2 not found; 12 memory ran out; 17 an object that compares equal is there already; 22
 * a failed comparison or a bad argument.
 */
#ifndef ORUPLATFORM_BALANCED_TREE_H
#define ORUPLATFORM_BALANCED_TREE_H

#include <oru/base.h>

ORU_BEGIN_DECLS

enum { BALANCED_TREE_EQUAL = 0, BALANCED_TREE_LESS = 1, BALANCED_TREE_GREATER = 2 };

/* What a search looks for; mode 0 means EXACT. */
enum {
    BALANCED_TREE_SEARCH_EXACT = 1,          /* the object that compares equal */
    BALANCED_TREE_SEARCH_AT_OR_NEXT = 2,     /* the equal object, else the next greater one */
    BALANCED_TREE_SEARCH_NEXT = 3,           /* the next greater one */
    BALANCED_TREE_SEARCH_AT_OR_PREVIOUS = 4, /* the equal object, else the next lesser one */
    BALANCED_TREE_SEARCH_PREVIOUS = 5        /* the next lesser one */
};

/* Makes an empty tree in `*tree`; on failure `*tree` stays as it is. `zero` is not looked at, here
 * and below. 22 for a null function or out. */
ORU_API int32_t balanced_tree_init(int32_t (*compare)(const void *a, const void *b), uintptr_t zero,
                                   void **tree);

/* Makes a zeroed object of `size` bytes, aligned to 16, that belongs to the tree and is not in it
 * yet; on failure `*object` stays as it is. */
ORU_API int32_t balanced_tree_allocate_object(void *tree, void **object, size_t size);

/* Puts an allocated object into the tree. On failure the object stays allocated; the caller may try
 * again or free it. 22 too for an object that is in the tree already or is another tree's. */
ORU_API int32_t balanced_tree_insert(void *tree, void *object, uintptr_t zero);

/* Looks an object up; `mode` is one of the numbers above, any other gives 22. The object is lent;
 * on failure `*object` stays as it is. `key` is handed to the comparison unread, null included. */
ORU_API int32_t balanced_tree_search(void *tree, int32_t mode, const void *key, void **object,
                                     uintptr_t zero);

/* Calls `fn` on the objects in order until it gives 0. The result is 0 whether all objects were
 * visited or not; `*status`, which may be null, is 0 when all were, 1 when the function ended the
 * walk. The function may free the object it is called with, and no other. */
ORU_API int32_t balanced_tree_walk(void *tree, int32_t (*fn)(void *object, void *context),
                                   void *context, int32_t *status);

/* Takes an object out of the tree, if it was put in, and frees it. 22 for another tree's object. */
ORU_API int32_t balanced_tree_free_object(void *tree, void *object);

/* Frees the tree and all of its objects, inserted or not. */
ORU_API int32_t balanced_tree_shutdown(void *tree, uintptr_t zero);

ORU_END_DECLS

#endif
