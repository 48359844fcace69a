// The small language of references: `$name` is a parameter of the call, `@name` and `@(path)` are
// values of the result tree. Results carry a reference of their own.
#ifndef ORU_SRC_DTL_VARIABLES_H
#define ORU_SRC_DTL_VARIABLES_H

#include <string_view>

#include "do/dtree.h"
#include "do/nlist.h"
#include "do/nvlist.h"
#include "do/uri.h"
#include "do/value.h"
#include "do/vlist.h"

namespace oru::dtl {

// Whether the text is a variable: `$` or `@` at the start, not doubled.
bool is_variable(const char *text);

// The text of a string value that is a variable, or null.
const char *variable_text(ORUDoValue *value);

// What stands between the third character of "@(path)suffix" and its first `)`, and what behind.
struct PathText {
    std::string_view path;
    const char *suffix;
};
PathText split_path(const char *text);

// The value of a reference; `fallback`, which may be null, when it has none. `node` is the result
// node at hand, `root` the top of its tree; either may be null.
Ref<ORUDoValue> resolve(ORUDoNvlist *params, const char *text, ORUDoValue *fallback,
                        ORUDoDtree *node, ORUDoDtree *root);

// The row that is being made, for references to its own values: `names` and `values` are of the
// same length, `parent` is the node at hand.
struct RowContext {
    ORUDoNvlist *params;
    ORUDoDtree *parent;
    ORUDoDtree *root;
    ORUDoNlist *names;
    ORUDoVlist *values;
};

// The first value of that name in a row, borrowed; null when there is none and for a null value.
ORUDoValue *row_value(ORUDoNlist *names, ORUDoVlist *values, std::string_view name);

// The callbacks of expressions; `context` is a RowContext.
ORUDoValue *resolve_row(void *context, const char *text, ORUDoValue *fallback);
void set_param(void *context, const char *text, ORUDoValue *value);

// The URI that a value stands for, or null.
Ref<ORUDoUri> value_to_uri(ORUDoValue *value);

// A where clause with its variables in place; null when it cannot be made.
Ref<ORUDoNvlist> resolve_where(ORUDoNvlist *where, ORUDoNvlist *params, ORUDoDtree *node,
                               ORUDoDtree *root);

}  // namespace oru::dtl

#endif
