// One fetch for one address of a node: a read of named attributes, a read of all, an action, or a
// batch of rows of a collection. What is read becomes result nodes below `parent`.
#ifndef ORU_SRC_DTL_FETCH_H
#define ORU_SRC_DTL_FETCH_H

#include "do/dtree.h"
#include "do/nlist.h"
#include "do/nvlist.h"
#include "do/properties.h"
#include "do/uri.h"
#include "do/vlist.h"
#include "do/vtable.h"
#include "oru/dtl.h"
#include "oru/nlist.h"

namespace oru::dtl {

struct Fetch {
    int32_t level;
    ORUDtlCtx *root_ctx;
    ORUDtlCtx *ctx;  // of the level; it owns the cursor
    ORUDoNvlist *params;
    ORUDtlNode *node;
    ORUDtlMrInfo *mr_info;  // of the node, never null
    ORUDoUri *uri;
    ORUDoDtree *parent;
    ORUDoDtree *root;
    int32_t count;        // rows to ask a cursor for
    ORUDoDtree **row;     // the first result node made, unless there is one already
    int32_t *node_added;  // counts result nodes
    uint8_t *retry;       // set to ask for another pass
};

// A result code; errors of the data sit on the result nodes that they concern.
int32_t dispatch(const Fetch &fetch);

// ---- The kinds of fetch ----

int32_t read_all(const Fetch &fetch, int32_t op);
int32_t read_attrs(const Fetch &fetch);
int32_t invoke_action(const Fetch &fetch, ORUDoUri *uri);
int32_t fetch_rows(const Fetch &fetch);

// Closes the level's cursor, if it has one.
void close_cursor(ORUDtlCtx *ctx);

// ---- What they share ----

// A new result node below the parent, counted; null when memory runs out.
ORUDoDtree *add_result(const Fetch &fetch, ORUDoName *name);

// Reports the node as the first one made, unless there is one.
void report_row(const Fetch &fetch, ORUDoDtree *node);

// Puts the error that the holder has, if any, on the node. True when there was one.
bool take_error(ORUErrorIfc *holder, ORUDoDtree *node);
void take_data_error(ORUDataIfc *data, ORUDoDtree *node);

// Whether a read of the data interface counts as good.
bool is_read(int32_t rc);

// Appends the values of one read of `count` names: those that are missing are null values, so that
// names and values stay side by side.
void append_values(ORUDoVlist &out, ORUDoVlist &values, int32_t count);

// The names that the node's selection gives, or null for no selection. `root` may be null.
Ref<ORUDoNlist> attr_select_list(const Fetch &fetch, ORUDoDtree *root);

// `_uri` and `_mr`.
bool add_id_names(ORUDoNlist *out);

// The names that begin with "_" or are selected; all without a selection.
void select_attrs(ORUDoNlist *list, ORUDoNlist *selection, ORUDoNlist *out);

// ---- The cursor's conditions ----

// The where clause of a cursor that is about to be opened, or null.
Ref<ORUDoNvlist> cursor_where(const Fetch &fetch);

// A clause that is used once was used for the node and for everything below it.
void mark_where_used(ORUDtlCtx *root_ctx, ORUDtlNode *node);

// The order of a cursor, or null.
Ref<ORUDoNlist> cursor_order(const Fetch &fetch);

// ---- Result nodes ----

// Gives the result node what the document asks for, out of a row of names and values. With
// `with_ids` also the row's `_uri` and `_mr`.
void fill_node(const Fetch &fetch, ORUDoDtree *dtree_node, ORUDoUri *uri, ORUDoNlist *attr_nlist,
               ORUDoVlist *attr_vlist, bool with_ids);

}  // namespace oru::dtl

#endif
