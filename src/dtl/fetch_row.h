// A batch of rows while it is being read.
#ifndef ORU_SRC_DTL_FETCH_ROW_H
#define ORU_SRC_DTL_FETCH_ROW_H

#include "do/name.h"
#include "dtl/fetch.h"

namespace oru::dtl {

struct Batch {
    const Fetch &fetch;
    bool oper_mr = false;         // the rows themselves are operational
    Ref<ORUDoName> row_name{};    // of the result nodes
    Ref<ORUDoNlist> cfg_list{};   // what the cursor gives of configuration rows
    Ref<ORUDoNlist> oper_list{};  // what it gives of operational rows, or is read row by row
    Ref<ORUDoNlist> all_names{};  // of a row's values, those of the cursor first
    Ref<ORUDoNvlist> where{};     // of a cursor that was opened for this batch
    ORUDoDtree *last = nullptr;   // the node of the row before, lent
};

// Makes the result node of a row. The code is the row's; the rows behind it are taken all the same.
int32_t take_row(Batch &batch, ORUDoVlist &row);

}  // namespace oru::dtl

#endif
