/*
 * The data tree language. A document, a small query in XML, is read into a tree of `ORUDtlNode`
 * records; a context walks that tree against the interfaces of a back end (oru/pr.h) and builds a
 * data tree of results (oru/dtree.h), a batch at a time.
 *
 *     ORUDtlNode *doc = oru_dtl_from_str(text, &error);
 *     ORUDtlCtx *ctx = oru_dtl_ctx_new(doc, data, coll);
 *     while (oru_dtl_get_next(data, ctx, params, 100) == ORU_OK) {
 *         use(ctx->dtree_node);
 *     }
 *     oru_dtl_ctx_delete(ctx);
 *     oru_dtl_tree_delete(doc);
 *
 * A tree is plain, not counted: it is made by one thread, outlives every context that uses it, and
 * is freed as a whole. It takes no locks; contexts may share it one at a time.
 *
 * A null node is refused by the assertion "dtl_node" unless told otherwise.
 */
#ifndef ORU_DTL_H
#define ORU_DTL_H

#include "oru/pr.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Node types ---- */
enum {
    ORU_DTL_NODE_UNKNOWN = 0,
    ORU_DTL_NODE_DOC = 1,           /* the top of a tree */
    ORU_DTL_NODE_ROOT = 2,          /* the document's element, without an address */
    ORU_DTL_NODE_MR_OP = 3,         /* an element with an address of its own */
    ORU_DTL_NODE_ATTR = 4,          /* a configuration or key attribute of the node above */
    ORU_DTL_NODE_OPER_ATTR = 5,     /* an operational attribute */
    ORU_DTL_NODE_CHILD_REF = 6,     /* a reference to children */
    ORU_DTL_NODE_PEER_REF = 7,      /* a reference to a peer */
    ORU_DTL_NODE_PARENT_REF = 8,    /* a reference to the parent */
    ORU_DTL_NODE_CFG_DATA = 9,      /* a group of configuration attributes */
    ORU_DTL_NODE_OPER_DATA = 10,    /* a group of operational attributes */
    ORU_DTL_NODE_ACTION = 11,       /* an action of the node above */
    ORU_DTL_NODE_ACTION_PARAM = 12, /* a parameter of an action */
    ORU_DTL_NODE_CONTAINER = 13     /* holds other elements */
};

/* ---- Operations ----
 * That on a collection is the plain one and `ORU_DTL_OP_COLL`. */
enum {
    ORU_DTL_OP_NOOP = 0,
    ORU_DTL_OP_TRAVERSE = 1,
    ORU_DTL_OP_GET = 2,
    ORU_DTL_OP_GET_ALL = 3,
    ORU_DTL_OP_GET_ALL_CFG = 4,
    ORU_DTL_OP_GET_ALL_OPER = 5,
    ORU_DTL_OP_GET_ALL_R = 6, /* `_R`: and so on for all children by metadata */
    ORU_DTL_OP_GET_ALL_CFG_R = 7,
    ORU_DTL_OP_GET_ALL_OPER_R = 8,
    ORU_DTL_OP_ACTION = 9,
    ORU_DTL_OP_COLL = 8,
    ORU_DTL_OP_COLL_GET = 10,
    ORU_DTL_OP_COLL_GET_ALL = 11,
    ORU_DTL_OP_COLL_GET_ALL_CFG = 12,
    ORU_DTL_OP_COLL_GET_ALL_OPER = 13,
    ORU_DTL_OP_COLL_GET_ALL_R = 14,
    ORU_DTL_OP_COLL_GET_ALL_CFG_R = 15,
    ORU_DTL_OP_COLL_GET_ALL_OPER_R = 16,
    ORU_DTL_OP_COLL_ACTION = 17
};

/* ---- Which rows of a fetch are returned ---- */
enum { ORU_DTL_RETURN_ALL = 0, ORU_DTL_RETURN_ONE = 1, ORU_DTL_RETURN_LAST = 2 };

/* ---- Records ----
 * The nodes and their parts own what they point at: one reference of each counted object, one block
 * of each text. */

struct ORUDtlNode {
    int32_t type;          /* ORU_DTL_NODE_... */
    ORUDoName *name;       /* the element's, and that of the result nodes it makes */
    int32_t op;            /* ORU_DTL_OP_... */
    ORUDoError *error;     /* or null; a node with an error gives a result node that carries it */
    ORUDtlMrInfo *mr_info; /* of a node that addresses a managed resource, or null */
    int32_t batch_size;    /* rows per fetch, 0 when not given */
    int32_t max_batches;   /* fetches per cursor, 0 when not given */
    char *default_expr;    /* value of an attribute that has none, or null */
    ORUDoName *prop_name;  /* the property that an attribute reads */
    ORUDtlNode *next;      /* sibling, in document order */
    ORUDtlNode *first_child;
};

/* What a node that addresses a managed resource reads there. Each part may be null;
   `prop_meta_list` of a known resource is when memory ran out for it. */
struct ORUDtlMrInfo {
    ORUDoUri *uri;                     /* the address, as the document gives it */
    ORUDoMrMeta *mr_meta;              /* description of the resource */
    ORUDoPropMetaList *prop_meta_list; /* all its properties */
    ORUDoNlist *cfg_attr_nlist;        /* configuration attributes to fetch */
    ORUDoNlist *oper_attr_nlist;       /* operational attributes to fetch */
    ORUDoNlist *cfg_data_nlist;        /* groups asked for */
    ORUDoNlist *oper_data_nlist;
    ORUDoName *act_name; /* the action, and its parameters */
    ORUDoProperties *act_in_params;
    ORUDoNvlist *where_clause; /* conditions on rows */
    ORUDoNlist *order_by;
    uint8_t return_default;        /* 1 at first: attributes that are not set give defaults */
    uint8_t return_w_child;        /* only rows that have children are returned */
    uint8_t use_where_clause_once; /* for the first cursor only */
    uint8_t continue_on_error;     /* errors of the data do not end the walk */
    ORUDoName *attr_select;        /* text that selects attributes */
    int32_t return_mode;           /* ORU_DTL_RETURN_... */
    char *order_param;             /* an order as given */
    char *batch_size_param;        /* numbers that parameters give */
    char *max_batches_param;
    uint8_t flatten; /* rows give way to their children */
};

/* ---- Contexts ---- */

/* States of a level of the walk. */
enum { ORU_DTL_STATE_NEW = 0, ORU_DTL_STATE_STOPPED = 1, ORU_DTL_STATE_FINISHED = 2 };

/*
 * One level of a walk; the chain from the top exists between calls exactly as far down as levels
 * stopped in the middle. Whoever made the top context reads `dtree_node` from it, and may set
 * `canceled`, from any thread: every level then ends with code 33 when it is entered.
 */
struct ORUDtlCtx {
    int32_t state;      /* ORU_DTL_STATE_... */
    int32_t call_count; /* top only: calls of oru_dtl_get_next */
    uint16_t debug;
    uint8_t canceled; /* top only, never set by the library */
    ORUDataIfc *crudx;
    ORUCollIfc *coll;
    ORUDtlCursor *cursor; /* of the collection in progress, owned, or null */
    int32_t batches;      /* fetches done on it */
    ORUDtlNode *dtl_node; /* whose children the level walks */
    /* Top: the root of the results, owned. Inner: the last row that a `return="one"` child gave,
       only compared. */
    ORUDoDtree *dtree_node;
    int32_t where_count;      /* top only: room in the next */
    ORUDoNvlist **where_used; /* where clauses that were used once, or null */
    ORUDtlNode *dtl_ch;       /* where to go on: a child of `dtl_node`, or null, */
    ORUDoDtree *dtree_ch;     /* and one of its rows, or null */
    ORUDtlCtx *parent;
    ORUDtlCtx *child;
};

/* ---- Trees: making ---- */

/* An empty tree: a node of type 1 and op 1 with the empty name. Null when memory runs out. */
ORU_API ORUDtlNode *oru_dtl_tree_new(void);

/*
 * A new last child of `parent`, with op 1, both names `name`, and everything else zero; it belongs
 * to the tree. Null when memory runs out. Asserts "parent" and "name".
 */
ORU_API ORUDtlNode *oru_dtl_tree_add_child(ORUDtlNode *parent, ORUDoName *name, int32_t type);

/* The same from a text. */
ORU_API ORUDtlNode *oru_dtl_tree_add_child_w_strname_type(ORUDtlNode *parent, const char *name,
                                                          int32_t type);

/*
 * Gives the node a new `mr_info` in place of what it had, with references to both arguments, which
 * may be null, and with all properties of `mr_meta`, or without a list of them when memory runs out
 * for it. `type` stays. The result is lent; null when memory runs out for the record.
 */
ORU_API ORUDtlMrInfo *oru_dtl_tree_init_mr_info(ORUDtlNode *dtl_node, ORUDoUri *uri,
                                                ORUDoMrMeta *mr_meta);

/* Frees a node with everything that hangs from it. Null is ignored. A parent is not told. */
ORU_API void oru_dtl_tree_delete(ORUDtlNode *dtl_node);

/* ---- Trees: asking ----
 * Flags, 0 or 1. */

/* By op; 0 for null: all by metadata; the attributes named; on a collection. */
ORU_API int32_t oru_dtl_tree_is_recursive_op(ORUDtlNode *dtl_node);
ORU_API int32_t oru_dtl_tree_is_get_specific_attr_op(ORUDtlNode *dtl_node);
ORU_API int32_t oru_dtl_tree_is_collection_op(ORUDtlNode *dtl_node);

/* Whether a node below has an op other than 0, 1, 9 and 17; 0 for null. */
ORU_API int32_t oru_dtl_tree_has_inner_mr_get(ORUDtlNode *dtl_node);

/* Whether the node's resource is known and operational. */
ORU_API int32_t oru_dtl_tree_mr_is_oper(ORUDtlNode *dtl_node);

/* The settings of `mr_info`; 0 without one. */
ORU_API int32_t oru_dtl_tree_flatten(ORUDtlNode *dtl_node);
ORU_API int32_t oru_dtl_tree_return_w_child(ORUDtlNode *dtl_node);
ORU_API int32_t oru_dtl_tree_return_one(ORUDtlNode *dtl_node);
ORU_API int32_t oru_dtl_tree_return_last(ORUDtlNode *dtl_node);

/* Likewise; 0 for null too. */
ORU_API int32_t oru_dtl_tree_continue_on_error(ORUDtlNode *dtl_node);

/* How many nodes, this one and all below, have a where clause; 0 for null. */
ORU_API int32_t oru_dtl_tree_count_where_clause(ORUDtlNode *dtl_node);

/* The text of an operation and of a node type, "(unknown)" for other numbers. Not freed. */
ORU_API const char *oru_dtl_tree_get_op_str(int32_t op);
ORU_API const char *oru_dtl_tree_get_node_type_str(int32_t type);

/* Rows per fetch and fetches per cursor, as set; 0 when not given. */
ORU_API int32_t oru_dtl_tree_get_batch_size(ORUDtlNode *dtl_node);
ORU_API int32_t oru_dtl_tree_get_max_batches(ORUDtlNode *dtl_node);

/* The texts, lent; null when not set and without `mr_info`. */
ORU_API const char *oru_dtl_tree_get_batch_size_param(ORUDtlNode *dtl_node);
ORU_API const char *oru_dtl_tree_get_max_batches_param(ORUDtlNode *dtl_node);
ORU_API const char *oru_dtl_tree_get_order_param(ORUDtlNode *dtl_node);

/* ---- Trees: changing a node ---- */

/* Set the type, ORU_DTL_NODE_..., the operation, ORU_DTL_OP_..., the rows per fetch and the fetches
   per cursor, 0 for no limit. Nothing is checked. */
ORU_API void oru_dtl_tree_set_type(ORUDtlNode *dtl_node, int32_t type);
ORU_API void oru_dtl_tree_set_op(ORUDtlNode *dtl_node, int32_t op);
ORU_API void oru_dtl_tree_set_batch_size(ORUDtlNode *dtl_node, int32_t n);
ORU_API void oru_dtl_tree_set_max_batches(ORUDtlNode *dtl_node, int32_t n);

/* The property that an attribute reads. A null node or text changes nothing. */
ORU_API void oru_dtl_tree_set_prop_name(ORUDtlNode *dtl_node, const char *text);

/*
 * Keeps a copy of the text, with a newline behind it when it begins with a digit or with "-" and a
 * digit, so that a number is read to its end. Null and empty change nothing. Called once: an
 * earlier text stays with whoever borrowed it.
 */
ORU_API void oru_dtl_tree_set_default_expr(ORUDtlNode *dtl_node, const char *text);

/* Replaces the error; null clears it. */
ORU_API void oru_dtl_tree_set_error(ORUDtlNode *dtl_node, ORUDoError *error);

/* ---- Trees: changing what is read ----
 * Without `mr_info` these do nothing. */

/* Set the flags of those names in `mr_info`, 0 for no; `_one` and `_last` set `return_mode`. */
ORU_API void oru_dtl_tree_set_return_default(ORUDtlNode *dtl_node, uint8_t flag);
ORU_API void oru_dtl_tree_set_return_w_child(ORUDtlNode *dtl_node, uint8_t flag);
ORU_API void oru_dtl_tree_set_use_where_clause_once(ORUDtlNode *dtl_node, uint8_t flag);
ORU_API void oru_dtl_tree_set_continue_on_error(ORUDtlNode *dtl_node, uint8_t flag);
ORU_API void oru_dtl_tree_set_return_one(ORUDtlNode *dtl_node);
ORU_API void oru_dtl_tree_set_return_last(ORUDtlNode *dtl_node);

/* Set by the text "true", by no other; never cleared. Null is ignored. */
ORU_API void oru_dtl_tree_set_flatten(ORUDtlNode *dtl_node, const char *text);

/* Texts, copied; null is ignored. An earlier text stays with whoever borrowed it. */
ORU_API void oru_dtl_tree_set_batch_size_param(ORUDtlNode *dtl_node, const char *text);
ORU_API void oru_dtl_tree_set_max_batches_param(ORUDtlNode *dtl_node, const char *text);
ORU_API void oru_dtl_tree_set_order_param(ORUDtlNode *dtl_node, const char *text);

/* The selection of attributes, a new name of that text. Null is ignored. */
ORU_API void oru_dtl_tree_set_attr_select(ORUDtlNode *dtl_node, const char *text);

/* Each adds to a list that is made when it is missing. Null is refused by the assertion of the
   argument's name. */
ORU_API void oru_dtl_tree_add_cfg_attr(ORUDtlNode *dtl_node, ORUDoName *attr_name);
ORU_API void oru_dtl_tree_add_oper_attr(ORUDtlNode *dtl_node, ORUDoName *attr_name);
ORU_API void oru_dtl_tree_add_cfg_data(ORUDtlNode *dtl_node, ORUDoName *cfg_data);
ORU_API void oru_dtl_tree_add_oper_data(ORUDtlNode *dtl_node, ORUDoName *oper_data);
ORU_API void oru_dtl_tree_add_order_by(ORUDtlNode *dtl_node, ORUDoName *name);
ORU_API void oru_dtl_tree_add_where_clause(ORUDtlNode *dtl_node, const char *name,
                                           ORUDoValue *value);

/* Takes a reference to a whole where clause in place of the one there. Asserts "where_nvlist". */
ORU_API void oru_dtl_tree_set_where_clause(ORUDtlNode *dtl_node, ORUDoNvlist *where_nvlist);

/* The action, with an empty table of parameters in place of the one there. Asserts "act_name". */
ORU_API void oru_dtl_tree_set_act_name(ORUDtlNode *dtl_node, ORUDoName *act_name);

/* A parameter of the action. Asserts "param_name" and "param_value". */
ORU_API void oru_dtl_tree_set_act_in_param(ORUDtlNode *dtl_node, ORUDoName *param_name,
                                           ORUDoValue *param_value);

/* Weak: a product may define these. What the library brings traces
   "Invoking weak definition of ORU dtl's tree_add_oper_attr_opt function" at level 3. */
ORU_API void oru_dtl_tree_add_cfg_attr_opt(void);
ORU_API void oru_dtl_tree_add_oper_attr_opt(void);

/* ---- Trees: printing ---- */

/*
 * Appends the tree as XML-like text for traces: what a node reads and which lists it has, not what
 * the document said. A node of type 1 stands for its first child, which it has. With a `format`
 * other than 0 on lines of their own, indented. The result is that of the last append. Asserts
 * "node" and "buf".
 */
ORU_API int32_t oru_dtl_tree_to_xml(ORUDtlNode *node, uint8_t format, ORUDoStrbuf *buf);

/* ---- Reading documents ----
 * The tree, which may be incomplete when an error comes along with it; the caller owns both. Null
 * for a document that cannot be had or is no XML, or that declares entities of its own: 10001.
 * 10001 "Failed to allocate DTL Node" where memory ran out for a node or for what it addresses,
 * 10000 "Max Level Exceeded" for elements 16 levels below the root, and "Invalid action name".
 * What else is wrong sits as an error on the node that it concerns. `errp` is written only when
 * there is an error. The caller holds the lock of the metadata store. Both assert their arguments
 * by name. Addresses have the limits of oru/uri.h: a longer name, or more segments, ends the
 * process. */

/* From a file. "Failed to open DTL file '%s': %s" and "Failed to read DTL file %s" at level 3. */
ORU_API ORUDtlNode *oru_dtl_from_file(const char *dtl_filename, ORUDoError **errp);

/* From a zero-terminated text. */
ORU_API ORUDtlNode *oru_dtl_from_str(const char *dtl_str, ORUDoError **errp);

/* ---- Walking ---- */

/*
 * A top context for a document, with the interfaces that it reads through; all three are lent and
 * outlive it. Null when memory runs out. Asserts "dtl_doc", "crudx" and "coll".
 */
ORU_API ORUDtlCtx *oru_dtl_ctx_new(ORUDtlNode *dtl_doc, ORUDataIfc *crudx, ORUCollIfc *coll);

/* Ends a context with those below it: closes their cursors, and gives up the results of a top
   context. Null is ignored. */
ORU_API void oru_dtl_ctx_delete(ORUDtlCtx *dtl_ctx);

/* A word that new levels inherit and nothing reads. Asserts "dtl_ctx". */
ORU_API void oru_dtl_ctx_set_debug(ORUDtlCtx *dtl_ctx, uint16_t flag);

/*
 * Goes on with the walk and puts what it read below `dtl_ctx->dtree_node`; hidden nodes are no part
 * of it. `ifc` is asked for the URI that relative addresses are relative to. `params` holds the
 * values of `$name`, and receives those that defaults compute.
 *
 * Between calls the results may be cleared; hidden rows, which wait for a later call, go with them.
 *
 * `count` above 0 aims at that many leaf rows in this call. 0 sets no limit and leaves the size of
 * each batch to the cursor; -1 sets no limit and asks for batches of the document's `batch-size`;
 * any other negative number sets no limit and is asked of the cursor, cast to unsigned.
 *
 * 0: results were added, and more may follow. 1: nothing more comes. 33: canceled. Other codes are
 * failures, with errors on the result nodes that they concern. Asserts "dtl_ctx", "params",
 * "dtl_ctx->crudx", "dtl_ctx->coll", "dtl_ctx->dtl_node", "dtl_ctx->dtree_node" and "ifc".
 */
ORU_API int32_t oru_dtl_get_next(ORUDataIfc *ifc, ORUDtlCtx *dtl_ctx, ORUDoNvlist *params,
                                 int32_t count);

ORU_END_DECLS

#endif
