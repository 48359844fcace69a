#include "back_end.h"

#include <algorithm>
#include <set>

#include "script.h"

namespace behaviour {
namespace {

void require(int32_t code, const std::string &what) {
    if (code != ORU_OK)
        throw ScriptFault(what + ": " + text_of_code(code));
}

// The types that can be reached from one, by their qualified names.
void add_types(const ORUMdMrMeta *type, std::set<std::string> &names) {
    if (type == nullptr || type->do_mr_meta == nullptr)
        return;
    const char *const name =
        oru_do_name_get_strname(oru_do_mr_meta_get_mr_fq_name(type->do_mr_meta));
    if (!names.insert(name).second)
        return;
    for (const ORUMdRefMeta *at = type->refs; at != nullptr; at = at->next)
        add_types(at->target_mr, names);
    for (const ORUMdMrMetaList *at = type->impl_mr_metas; at != nullptr; at = at->next)
        add_types(at->mr, names);
}

Lines addresses_of(ORUCollIfc *coll, const std::string &type) {
    const Uri uri = made<Uri>(oru_do_uri_new(("//?:" + type).c_str()));
    const NameList names = made<NameList>(oru_do_nlist_new());
    oru_do_nlist_add_string(names.get(), ORU_DO_NAME_URI);
    oru_do_nlist_add_string(names.get(), ORU_DO_NAME_MR);
    ORUDtlCursor *cursor = nullptr;
    require(coll->new_config_cursor(coll, uri.get(), names.get(), nullptr, nullptr, 0, &cursor),
            "the resources of the type " + type);
    const Table table = made<Table>(oru_do_vtable_new());
    cursor->cursor_get_next(cursor, 0, table.get());
    cursor->cursor_close(cursor);
    Lines addresses;
    EachRow rows(table.get());
    while (ORUDoVlist *row = rows()) {
        EachValue values(row);
        addresses.push_back(text_of(values()));
    }
    return addresses;
}

void add_properties(ORUDataIfc *data, const std::string &address, Lines &lines) {
    const Uri uri = made<Uri>(oru_do_uri_new(full_address(address).c_str()));
    for (const auto get : {data->get_cfg_props, data->get_oper_props}) {
        const Properties props = made<Properties>(oru_do_properties_new());
        require(get(data, uri.get(), nullptr, props.get()), address);
        EachProperty each(props.get());
        while (ORUDoProperty *property = each())
            lines.push_back(address + " " + oru_do_property_get_name_string(property) + "=" +
                            text_of(oru_do_property_get_value(property), true));
    }
}

}  // namespace

BackEnd::BackEnd(const StartOptions &options) : root_type_(options.root_type) {
    ORUEmbeddedOptions with = {};
    with.size = sizeof with;
    with.database = options.database.c_str();
    with.model_dir = options.model_dir.c_str();
    with.root_type = options.root_type.c_str();
    with.durability = ORU_EMBEDDED_RELAXED;
    with.keep_commits = options.keep_commits;
    with.keep_seconds = options.keep_seconds;
    require(oru_lib_init(nullptr, 0, &with), "the back end does not start");
    plain_ = open(nullptr);
    showing_ = open("show");
}

BackEnd::~BackEnd() {
    for (ORUEmbeddedSession *session : {plain_, showing_})
        oru_cl_session_close(reinterpret_cast<intptr_t>(session), 0, 0, 0, 0, 0);
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    oru_md_free();
}

ORUEmbeddedSession *BackEnd::open(const char *secrets) {
    const NameValueList params = made<NameValueList>(oru_do_nvlist_new());
    oru_do_nvlist_add_string(params.get(), "user", "script");
    if (secrets != nullptr)
        oru_do_nvlist_add_string(params.get(), "secrets", secrets);
    ORUEmbeddedSession *session = nullptr;
    const auto out = reinterpret_cast<intptr_t>(&session);
    require(static_cast<int32_t>(oru_cl_session_open(params.get(), out, 0)), "no session");
    return session;
}

Lines BackEnd::snapshot() const {
    std::set<std::string> types;
    oru_md_rdlock();
    add_types(oru_md_get_mr_meta_by_name(root_type_.c_str()), types);
    oru_md_unlock();
    Lines lines;
    for (const std::string &type : types) {
        for (const std::string &address : addresses_of(showing_->coll, type)) {
            lines.push_back(address + " " + type);
            add_properties(showing_->data, address, lines);
        }
    }
    return lines;
}

}  // namespace behaviour
