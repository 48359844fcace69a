/*
 * The data tree language. A document, a small query in XML, is read into a tree of `ORUDtlNode`
 * records; a context walks that tree against the interfaces of a back end (oru/pr.h) and builds a
 * data tree of results (oru/dtree.h), a batch at a time.
 *
 * A tree is plain, not counted: it is made by one thread, outlives every context that uses it, and
 * is freed as a whole. It takes no locks; contexts may share it one at a time.
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

/* What a node that addresses a managed resource reads there. Each part may be null but for
   `prop_meta_list` of a known resource. */
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

ORU_END_DECLS

#endif
