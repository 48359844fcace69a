#include "reading.h"

#include <algorithm>

#include "addresses.h"
#include "assignments.h"
#include "fault_words.h"
#include "model_words.h"

namespace oructl {
namespace {

constexpr uint32_t kBatch = 500;

NameList name_list(const std::vector<std::string> &names) {
    auto list = made<NameList>(oru_do_nlist_new());
    for (const std::string &name : names)
        oru_do_nlist_add_string(list.get(), name.c_str());
    return list;
}

Properties with_names(const std::vector<std::string> &names, ORUDoVlist *values) {
    auto props = made<Properties>(oru_do_properties_new());
    EachValue each(values);
    for (const std::string &name : names) {
        ORUDoValue *const value = each();
        if (value != nullptr && oru_do_value_is_null(value) == 0)
            oru_do_properties_set_value(props.get(), name.c_str(), value);
    }
    return props;
}

struct CloseCursor {
    void operator()(ORUDtlCursor *cursor) const { cursor->cursor_close(cursor); }
};
using Cursor = std::unique_ptr<ORUDtlCursor, CloseCursor>;

Cursor open_cursor(const Database &database, const std::string &address, ORUDoNlist *names,
                   bool with_defaults) {
    const auto uri = made<Uri>(oru_do_uri_new(address.c_str()));
    ORUDtlCursor *cursor = nullptr;
    const int32_t code = database.coll()->new_config_cursor(
        database.coll(), uri.get(), names, nullptr, nullptr, with_defaults ? 1 : 0, &cursor);
    if (code == ORU_RC_NO_SUCH_COLLECTION)
        throw Failure(address + ": the model has no such collection");
    if (code != ORU_OK)
        throw Failure(address + ": " +
                      words_of_failure(database.data()->get_error_ifc(database.data()), code));
    return Cursor(cursor);
}

}  // namespace

Properties read_resource(const Database &database, const std::string &address,
                         const std::vector<std::string> &names, bool with_defaults) {
    const auto uri = made<Uri>(oru_do_uri_new(address.c_str()));
    const NameList list = name_list(names);
    const auto values = made<ValueList>(oru_do_vlist_new());
    ORUDataIfc *const data = database.data();
    const int32_t code =
        data->get_cfg_prop_values(data, uri.get(), list.get(), with_defaults ? 1 : 0, values.get());
    if (code == ORU_RC_NO_SUCH_RESOURCE)
        throw Failure(address + ": there is no such resource");
    if (code != ORU_OK)
        throw Failure(address + ": " + words_of_failure(data->get_error_ifc(data), code));
    return with_names(names, values.get());
}

void read_collection(const Database &database, const std::string &address,
                     const std::vector<std::string> &names, bool with_defaults,
                     const TakeRow &take) {
    const NameList list = name_list(names);
    const Cursor cursor = open_cursor(database, address, list.get(), with_defaults);
    int32_t code = ORU_OK;
    while (code == ORU_OK) {
        const auto rows = made<Table>(oru_do_vtable_new());
        code = cursor->cursor_get_next(cursor.get(), kBatch, rows.get());
        for (EachRow each(rows.get()); ORUDoVlist *row = each();)
            take(with_names(names, row));
    }
    if (code != ORU_RC_NO_MORE_VALUE)
        throw Failure(address + ": " +
                      words_of_failure(cursor->cursor_get_error_ifc(cursor.get()), code));
}

ORUMdMrMeta *type_of_collection(const Database &database, const std::string &address) {
    const size_t mark = address.find('?');
    const std::string query = address.substr(mark + 1);
    if (const size_t colon = query.find(':'); colon != std::string::npos)
        return oru_md_get_mr_meta_by_name(query.substr(colon + 1).c_str());
    std::string base = address.substr(0, mark);
    if (base.ends_with('*'))
        base.pop_back();
    const Address parent = read_address(base.empty() ? "/" : base);
    ORUMdMrMeta *const mr = type_by_model(database.root(), parent);
    if (mr == nullptr || query.empty())
        return nullptr;
    return type_by_model(database.root(),
                         read_address((parent.path == "/" ? "" : parent.path) + "/" + query));
}

std::vector<std::string> all_names(const ORUMdMrMeta &mr) {
    std::vector<std::string> names = attributes_of(mr);
    names.insert(names.begin(), {ORU_DO_NAME_URI, ORU_DO_NAME_MR});
    return names;
}

void check_names(const ORUMdMrMeta &mr, const std::vector<std::string> &names) {
    std::vector<std::string> known = attributes_of(mr);
    for (const ORUMdMrMetaList &entry : records(mr.impl_mr_metas)) {
        for (std::string &name : attributes_of(*entry.mr))
            known.push_back(std::move(name));
    }
    for (const std::string &name : names) {
        const bool is_known = name == ORU_DO_NAME_URI || name == ORU_DO_NAME_MR ||
                              std::ranges::find(known, name) != known.end();
        if (!is_known)
            throw Failure(qualified_name(mr) + " has no attribute " + in_quotes(name) +
                          similar_question(name, known));
    }
}

}  // namespace oructl
