/*
 * ORUDoDtree: a node of a tree of managed resources. A node has a name and, when they are known, a
 * resource's URI and properties, an error, and children in order. Trees are what a data tree
 * document gives back.
 *
 * A parent holds one reference on each child; `parent` is a plain link that keeps nothing alive, so
 * whoever holds a subtree by itself must not look up from it. A tree under construction belongs to
 * one thread. Unless told otherwise a null node asserts "dtree".
 *
 * A node may be hidden. Hidden nodes do not come out of the iterator, are not written as text and
 * do not count in `oru_do_dtree_get_unhidden_child_count`; everything else sees them.
 */
#ifndef ORU_DTREE_H
#define ORU_DTREE_H

#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* What `oru_do_dtree_flatten` does to each node that it moves, a set of bits. */
#define ORU_DTREE_FLATTEN_NODE_NAMES 0x1u /* the name becomes "parent.node" */
#define ORU_DTREE_FLATTEN_ATTR_NAMES                                                       \
    0x2u                            /* attributes get the name's part behind its first "." \
                                     */
#define ORU_DTREE_FLATTEN_URIS 0x4u /* the parent's URI is set as "parent.__uri" */

/* ---- Making ----
 * Null when memory runs out. */

/* A node with one reference. `name` is required ("name") and shared; the text is copied. */
ORU_API ORUDoDtree *oru_do_dtree_new(ORUDoName *name);
ORU_API ORUDoDtree *oru_do_dtree_new_str(const char *text);

/* Makes a node and appends it to the children of `parent_dtree`. The result is borrowed: the only
   reference is the parent's. Both arguments are required. */
ORU_API ORUDoDtree *oru_do_dtree_add_child(ORUDoDtree *parent_dtree, ORUDoName *name);

/*
 * Appends `child_node`, counting a reference on it, and gives it back. A node that has a sibling
 * behind it belongs to another chain: it is not touched, the parent gets an error of code 10000
 * ("oru_do_dtree_adopt_child: child has sibling."), and the result is null. The last child of a
 * chain passes this test; taking it out of that chain first is up to the caller. Both arguments are
 * required. Costs the length of the chain.
 */
ORU_API ORUDoDtree *oru_do_dtree_adopt_child(ORUDoDtree *parent_dtree, ORUDoDtree *child_node);

/* Moves all children of `from_dtree` behind those of `to_dtree`. The parent of the moved nodes
   stays `from_dtree`: who goes up from them keeps it alive. Both arguments are required. */
ORU_API void oru_do_dtree_transfer_children(ORUDoDtree *to_dtree, ORUDoDtree *from_dtree);

/* ---- Fields ----
 * What a getter gives is borrowed and may be null. */

/* The name, which is always there. */
ORU_API ORUDoName *oru_do_dtree_get_name(ORUDoDtree *dtree);

/* The URI of the resource. */
ORU_API ORUDoUri *oru_do_dtree_get_mr_uri(ORUDoDtree *dtree);

/* The properties. */
ORU_API ORUDoProperties *oru_do_dtree_get_properties(ORUDoDtree *dtree);

/* The error. */
ORU_API ORUDoError *oru_do_dtree_get_error(ORUDoDtree *dtree);

/* Replace what the node holds by a shared object; null clears. `_mr_data` sets URI and properties.
   A URI whose value cannot be had leaves the node without one. */
ORU_API void oru_do_dtree_set_mr_uri(ORUDoDtree *dtree, ORUDoUri *uri);
ORU_API void oru_do_dtree_set_properties(ORUDoDtree *dtree, ORUDoProperties *props);
ORU_API void oru_do_dtree_set_mr_data(ORUDoDtree *dtree, ORUDoUri *uri, ORUDoProperties *props);
ORU_API void oru_do_dtree_set_error(ORUDoDtree *dtree, ORUDoError *error);

/* ---- Around a node ---- */

/* The parent, null at a root and for a null node. */
ORU_API ORUDoDtree *oru_do_dtree_get_parent(ORUDoDtree *dtree);

/* The topmost node above, the node itself at a root. */
ORU_API ORUDoDtree *oru_do_dtree_get_root(ORUDoDtree *dtree);

/* How many children there are, and how many of them are not hidden. */
ORU_API int32_t oru_do_dtree_get_child_count(ORUDoDtree *dtree);
ORU_API int32_t oru_do_dtree_get_unhidden_child_count(ORUDoDtree *dtree);

/* The child at `index` from 0, hidden ones counted; null for an index out of range. */
ORU_API ORUDoDtree *oru_do_dtree_get_child(ORUDoDtree *dtree, int32_t index);

/* The first child of that name, hidden or not. */
ORU_API ORUDoDtree *oru_do_dtree_get_child_by_name(ORUDoDtree *dtree, const char *text);

/* Releases all children. */
ORU_API void oru_do_dtree_remove_children(ORUDoDtree *dtree);

/* Releases the siblings in front of a node, which becomes its parent's first child. */
ORU_API void oru_do_dtree_remove_visited_peers(ORUDoDtree *dtree);

/* Hides a node, or shows it with `hidden` 0; a null node is ignored. */
ORU_API void oru_do_dtree_hide_node(ORUDoDtree *dtree, int32_t hidden);

/* The flag as it was set; 0 for a null node. */
ORU_API int32_t oru_do_dtree_is_hidden(ORUDoDtree *dtree);

/* The same for all children behind the child `after`, or for all of them with a null `after`. */
ORU_API void oru_do_dtree_hide_children(ORUDoDtree *dtree, ORUDoDtree *after, int32_t hidden);

/* Walk the children that are not hidden; kind DO_COLL_DTREE. A null iterator asserts "iter". */
ORU_API void oru_do_dtree_child_iter(ORUDoDtree *dtree, ORUDoIter *iter);
ORU_API int32_t oru_do_dtree_has_next_child(ORUDoIter *iter);
ORU_API ORUDoDtree *oru_do_dtree_get_next_child(ORUDoIter *iter);

/* ---- Values ---- */

/*
 * The value of an attribute, borrowed. "_uri" that is no attribute with a value gives the node's
 * URI, as a value. Null when there is none.
 */
ORU_API ORUDoValue *oru_do_dtree_get_value(ORUDoDtree *dtree, const char *name_text);

/* Sets an attribute; the table is made when the node has none. Nothing happens when memory for it
   runs out. A null value on a new name asserts "val", on an existing one it changes nothing. */
ORU_API void oru_do_dtree_set_value(ORUDoDtree *dtree, const char *name_text, ORUDoValue *value);

/* ---- Looking up ----
 * Results are borrowed. `error`, which may be null, receives a new error of code 10002 when memory
 * runs out; it belongs to the caller.
 *
 * A path has segments between slashes: "." stays, ".." goes up, anything else goes to the first
 * child of that name. A path that begins with "/" starts at the root, any other at the node.
 * Blanks at both ends and one trailing slash do not count, but "/" starts at the root only as the
 * very first character. */

/* The node that a path leads to; null for one that leads nowhere, is null or is empty. */
ORU_API ORUDoDtree *oru_do_dtree_get_node_by_path(ORUDoDtree *dtree, const char *path,
                                                  ORUDoError **error);

/*
 * The value of the attribute that the last segment names, at the node that the segments before it
 * lead to; `default_value` when there is none. A path of one segment names an attribute of `dtree`
 * itself, also with a slash in front, and so does the first segment of a path that leads nowhere.
 */
ORU_API ORUDoValue *oru_do_dtree_get_value_by_path(ORUDoDtree *dtree, const char *path,
                                                   ORUDoValue *default_value, ORUDoError **error);

/* The first node, a parent before its children, whose URI equals `uri` (required). */
ORU_API ORUDoDtree *oru_do_dtree_get_node_by_uri(ORUDoDtree *dtree, ORUDoUri *uri);

/* The value that "uri#path" names: the path, from the node of that URI. `default_value` when there
   is none, without a "#", and for a null text, which leaves an error as if memory had run out. */
ORU_API ORUDoValue *oru_do_dtree_get_value_by_uri(ORUDoDtree *dtree, const char *query_uri,
                                                  ORUDoValue *default_value, ORUDoError **error);

/* Adds the errors of all nodes, a parent's before its children's, to the list and gives how many
   were added; 0 when an argument is null. */
ORU_API int32_t oru_do_dtree_get_errors(ORUDoDtree *dtree, ORUDoErrorList *error_list);

/* ---- Visiting ----
 * `pre` sees a node before what is below it, `post` behind it; either may be null. `parent` is null
 * and `level` 0 for the node at the top. A callback that gives 0 ends the visit, which then gives 0
 * at once; a visit that ran to its end gives 1. */

/* Node by node, each with all that is below it. */
ORU_API int32_t oru_do_dtree_visit_depth_first(ORUDoDtree *dtree,
                                               int32_t (*pre)(ORUDoDtree *parent, ORUDoDtree *node,
                                                              int32_t level, void *context),
                                               int32_t (*post)(ORUDoDtree *parent, ORUDoDtree *node,
                                                               int32_t level, void *context),
                                               void *context);

/* Family by family: all children of a node come before the first grandchild, but the children of
   the first child come before those of the second. */
ORU_API int32_t oru_do_dtree_visit_breath_first(
    ORUDoDtree *dtree,
    int32_t (*pre)(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, void *context),
    int32_t (*post)(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, void *context),
    void *context);

/* ---- Flattening ---- */

/*
 * Replaces each child that has children by these, spliced into the chain at its place, several
 * levels at once. `flags` (ORU_DTREE_FLATTEN_...) tells what the moved nodes take over; the child's
 * properties are added to theirs in any case. With `start_child` only that child is flattened, and
 * the nodes that come into its place. Children that somebody else holds too stay as they are.
 *
 * The result is the last node that stays, borrowed, or null. The parent of moved nodes points at a
 * node that is gone: nobody may go up from them. Flattening several children in one call can lose
 * nodes of a later one, which is why the executor works child by child.
 */
ORU_API ORUDoDtree *oru_do_dtree_flatten(ORUDoDtree *dtree, ORUDoDtree *start_child,
                                         uint32_t flags);

/* Flattens the children of the first child; the result is the first child, null when there is none.
 */
ORU_API ORUDoDtree *oru_do_dtree_flatten_doc(ORUDoDtree *dtree, uint32_t flags);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoDtree *oru_do_dtree_ref(ORUDoDtree *dtree);

/* Releases one reference; null is ignored. The last one releases the subtree as far as nobody else
   holds parts of it. */
ORU_API void oru_do_dtree_deref(ORUDoDtree *dtree);

/* Sizes the pool of the nodes. */
ORU_API void *init_chunk_poolheap_oru_do_dtree(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
