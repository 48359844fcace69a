// One row of a batch.
#include "dtl/fetch_row.h"

#include <cstring>

#include "do/dtree.h"
#include "do/error.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace oru::dtl {
namespace {

// 101 for a row without any value, what the getter left otherwise.
ORUDoUri *uri_of_row(const ORUDoVlist &row, int32_t &rc) {
    rc = ORU_RC_VALUE_TYPE;
    if (row.first == nullptr || row.first->value == nullptr)
        return nullptr;
    ORUDoUri *uri = oru_do_value_get_mr_uri(row.first->value, &rc);
    return rc == 0 ? uri : nullptr;
}

void report_row_without_uri(Batch &batch, int32_t rc) {
    ORU_TRACE(Level::failure, "row has no URI");
    batch.last = nullptr;
    ORUDoDtree *child = add_result(batch.fetch, batch.row_name.get());
    const auto error = Ref<ORUDoError>::adopt(oru_do_error_new(rc, "unexpected do type"));
    if (child != nullptr && error)
        oru_do_dtree_set_error(child, error.get());
}

// Where the start position of a clause that is used once compares otherwise than as equal with the
// row's value, it has done its work. The length takes the blank and one character of the comparison
// along, so that the name of an attribute alone never fits.
void note_start_position(const Batch &batch, const ORUDoVlist &row, const ORUDoNvlistItem &where) {
    const char *blank = std::strchr(where.name, ' ');
    if (blank == nullptr || std::strncmp(blank + 1, ">=", 2) != 0)
        return;
    const size_t length = std::strlen(where.name) - std::strlen(blank + 1) + 1;
    const ORUDoVlistItem *value = row.first;
    for (auto *name = batch.all_names->first; name != nullptr && value != nullptr;
         name = name->next, value = value->next) {
        if (name->name == nullptr || value->value == nullptr ||
            oru_do_name_equals_w_strname_l(name->name, where.name, static_cast<int32_t>(length)) ==
                0)
            continue;
        if (oru_do_value_compare_nostrict(value->value, where.value) != 0)
            mark_where_used(batch.fetch.root_ctx, batch.fetch.node);
        return;
    }
}

void note_start_positions(const Batch &batch, const ORUDoVlist &row) {
    if (!batch.where || batch.fetch.mr_info->use_where_clause_once == 0)
        return;
    for (auto *item = batch.where->first; item != nullptr; item = item->next)
        note_start_position(batch, row, *item);
}

// Adds the operational values that the row's resource has beside its configuration.
int32_t read_oper_values(const Batch &batch, ORUDoUri *uri, ORUDoDtree *child, ORUDoVlist &values) {
    ORUDoNlist *names = batch.oper_list.get();
    if (names == nullptr || batch.oper_mr)
        return ORU_OK;
    const auto read = Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    if (!read)
        return ORU_OK;
    ORU_TRACE(Level::detail, "Invoking oper-data-get on %s", oru_do_uri_get_uri_str(uri));
    ORUDataIfc *data = batch.fetch.ctx->crudx;
    const int32_t rc = data->get_oper_prop_values(data, uri, names, read.get());
    if (!is_read(rc)) {
        take_data_error(data, child);
        return rc;
    }
    append_values(values, *read, oru_do_nlist_get_len(names));
    return ORU_OK;
}

// The values of a row for each of the names: those of the row itself where nothing is read beside
// them, which spares a copy.
Ref<ORUDoVlist> values_of(const Batch &batch, ORUDoVlist &row) {
    ORUDoNlist *of_cursor = batch.oper_mr ? batch.oper_list.get() : batch.cfg_list.get();
    const int32_t count = oru_do_nlist_get_len(of_cursor);
    const bool is_alone = batch.oper_list.get() == nullptr || batch.oper_mr;
    if (is_alone && oru_do_vlist_get_len(&row) >= count)
        return Ref<ORUDoVlist>::share(&row);
    auto values = Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    if (values)
        append_values(*values, row, count);
    return values;
}

int32_t add_row(Batch &batch, ORUDoVlist &row, ORUDoUri *uri) {
    // A batch without any node would leave its cursor to the next sibling, so this is told.
    ORUDoDtree *child = dtree_add_child_behind(*batch.fetch.parent, batch.last, *batch.row_name);
    if (child == nullptr)
        return ORU_RC_MALLOC;
    batch.last = child;
    ++*batch.fetch.node_added;
    report_row(batch.fetch, child);
    const Ref<ORUDoVlist> values = values_of(batch, row);
    if (!values)
        return ORU_OK;
    const int32_t rc = read_oper_values(batch, uri, child, *values);
    fill_node(batch.fetch, child, uri, batch.all_names.get(), values.get(), true);
    return rc;
}

}  // namespace

int32_t take_row(Batch &batch, ORUDoVlist &row) {
    int32_t rc = ORU_OK;
    const auto uri = Ref<ORUDoUri>::share(uri_of_row(row, rc));
    if (!uri) {
        report_row_without_uri(batch, rc);
        return rc;
    }
    note_start_positions(batch, row);
    if (batch.fetch.mr_info->act_name == nullptr)
        return add_row(batch, row, uri.get());
    ORU_TRACE(Level::detail, "Invoking action on %s", oru_do_uri_get_uri_str(uri.get()));
    return invoke_action(batch.fetch, uri.get());
}

}  // namespace oru::dtl
