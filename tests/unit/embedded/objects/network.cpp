#include "network.h"

#include <oruplatform/poolheap.h>

#include <cstring>

namespace embedded {

namespace {

const std::string kLocation = "//locations;locationId=global";

std::string full(const std::string &address) {
    return address.starts_with("//") ? address : kLocation + (address == "/" ? "" : address);
}

std::string without_location(std::string text) {
    for (size_t at; (at = text.find(kLocation)) != std::string::npos;)
        text.erase(at, kLocation.size());
    return text;
}

Properties read_props(const std::string &json) {
    const std::string tagged = "{\"%properties\":" + json + "}";
    ORUDoError *error = nullptr;
    Properties props(
        oru_do_properties_from_json(tagged.c_str(), static_cast<int32_t>(tagged.size()), &error));
    if (!props)
        ADD_FAILURE() << json << ": " << (error != nullptr ? oru_do_error_get_msg(error) : "");
    oru_do_error_deref(error);
    return props;
}

std::string text_of(ORUDoValue *value) {
    if (value == nullptr || oru_do_value_is_null(value) != 0)
        return "-";
    const Buffer buffer(oru_do_strbuf_new());
    oru_do_value_to_strbuf(value, 0, buffer.get());
    std::string text = without_location(std::string(view(oru_do_strbuf_to_string(buffer.get()))));
    return oru_do_value_is_default(value) != 0 ? "(" + text + ")" : text;
}

NameList name_list(const std::vector<std::string> &names) {
    NameList list(oru_do_nlist_new());
    for (const std::string &name : names)
        oru_do_nlist_add_string(list.get(), name.c_str());
    return list;
}

void add_faults(ORUDoError *error, Answer &answer) {
    for (ORUDoError *at = oru_do_error_get_cause(error); at != nullptr;
         at = oru_do_error_get_cause(at)) {
        const std::string words = without_location(oru_do_error_get_msg(at));
        if (words.find(": ") != std::string::npos)
            answer.faults.push_back(words);
        EachPropErr each(oru_do_error_get_prop_errs(at));
        while (ORUDoPropErr *entry = each()) {
            ORUDoError *const of_attribute = oru_do_prop_err_get_err(entry);
            answer.faults.push_back(words.substr(0, words.find(": ")) + " " +
                                    oru_do_name_get_strname(oru_do_prop_err_get_name(entry)) + " " +
                                    std::to_string(oru_do_error_get_code(of_attribute)) + " " +
                                    without_location(oru_do_error_get_msg(of_attribute)));
        }
    }
}

}  // namespace

ORUEmbeddedOptions Network::options() const {
    ORUEmbeddedOptions with = {};
    with.size = sizeof with;
    with.model_dir = NETWORK_PACKAGES;
    with.root_type = "com.example.network:1.0/System";
    return with;
}

void Network::restart() {
    close_session(session);
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    ORUEmbeddedOptions with = options();
    ASSERT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
    session = open_session();
}

void Network::SetUp() {
    ORUEmbeddedOptions with = options();
    ASSERT_EQ(oru_lib_init(nullptr, 0, &with), ORU_OK);
    session = open_session();
    ASSERT_NE(session, nullptr);
    operations_ = Operations(oru_do_config_ops_new());
}

void Network::TearDown() {
    operations_ = {};
    close_session(session);
    oru_lib_shutdown(0, 0, 0, 0, 0, 0);
    oru_md_free();
}

ORUEmbeddedSession *Network::open_session(const char *secrets) {
    const NameValueList params(oru_do_nvlist_new());
    oru_do_nvlist_add_string(params.get(), "user", "ann");
    if (secrets != nullptr)
        oru_do_nvlist_add_string(params.get(), "secrets", secrets);
    ORUEmbeddedSession *opened = nullptr;
    EXPECT_EQ(oru_cl_session_open(params.get(), reinterpret_cast<intptr_t>(&opened), 0), ORU_OK);
    return opened;
}

void Network::close_session(ORUEmbeddedSession *which) {
    oru_cl_session_close(reinterpret_cast<intptr_t>(which), 0, 0, 0, 0, 0);
}

void Network::load() {
    char *text = nullptr;
    ASSERT_EQ(oru_read_file(NETWORK_DATA, &text), ORU_OK);
    const Answer answer = load(text);
    ph_free_named(text);
    EXPECT_EQ(answer.code, ORU_OK);
    EXPECT_EQ(answer.faults, std::vector<std::string>());
}

Answer Network::load(const std::string &json) {
    ORUDoError *error = nullptr;
    ORUDoPropertiesList *const list =
        oru_do_properties_list_from_json(json.c_str(), static_cast<int32_t>(json.size()), &error);
    EXPECT_NE(list, nullptr);
    EachProperties each(list);
    while (ORUDoProperties *props = each()) {
        int32_t rc = 0;
        const std::string address =
            oru_do_uri_get_uri_str(oru_do_properties_get_mr_uri(props, ORU_DO_NAME_URI, &rc));
        const std::string type = oru_do_properties_get_string(props, ORU_DO_NAME_MR, &rc);
        const size_t slash = address.rfind('/');
        if (slash < kLocation.size()) {
            add(ORU_EMBEDDED_OP_SET, address, Properties::share(props), {}, {});
            continue;
        }
        const std::string last = address.substr(slash + 1);
        add(ORU_EMBEDDED_OP_CREATE, address.substr(0, slash), Properties::share(props),
            last.substr(0, last.find(';')), type);
    }
    oru_do_properties_list_deref(list);
    return commit(ORU_EMBEDDED_SYSTEM);
}

void Network::add(int32_t code, const std::string &address, const Properties &props,
                  const std::string &reference, const std::string &type) {
    const Uri uri(oru_do_uri_new(address.c_str()));
    const Name reference_name(reference.empty() ? nullptr : oru_do_name_new(reference.c_str()));
    const Name type_name(type.empty() ? nullptr : oru_do_name_new(type.c_str()));
    oru_do_config_ops_add(operations_.get(), code, uri.get(), props.get(), reference_name.get(),
                          type_name.get(), nullptr);
}

void Network::create(const std::string &parent, const std::string &reference,
                     const std::string &type, const std::string &props) {
    add(ORU_EMBEDDED_OP_CREATE, full(parent), read_props(props), reference, type);
}

void Network::set(const std::string &address, const std::string &props) {
    add(ORU_EMBEDDED_OP_SET, full(address), read_props(props), {}, {});
}

void Network::remove(const std::string &address) {
    add_operation(ORU_EMBEDDED_OP_DELETE, address);
}

void Network::add_operation(int32_t code, const std::string &address) {
    add(code, full(address), {}, {}, {});
}

Answer Network::commit(uint32_t flags, const char *request) {
    Answer answer;
    ORUDoError *error = nullptr;
    answer.code =
        session->commit(session, operations_.get(), flags, request, &answer.revision, &error);
    if (error != nullptr)
        add_faults(error, answer);
    oru_do_error_deref(error);
    operations_ = Operations(oru_do_config_ops_new());
    return answer;
}

std::string Network::get(const std::string &address, const std::vector<std::string> &names,
                         bool return_defaults) {
    const Uri uri(oru_do_uri_new(full(address).c_str()));
    const NameList list = name_list(names);
    const ValueList values(oru_do_vlist_new());
    const int32_t code = session->data->get_cfg_prop_values(session->data, uri.get(), list.get(),
                                                            return_defaults ? 1 : 0, values.get());
    if (code != ORU_OK)
        return "code " + std::to_string(code);
    std::string text;
    EachValue each(values.get());
    for (const std::string &name : names)
        text += (text.empty() ? "" : " ") + name + "=" + text_of(each());
    return text;
}

std::string Network::get_all(const std::string &address, bool is_operational) {
    const Uri uri(oru_do_uri_new(full(address).c_str()));
    const Properties props(oru_do_properties_new());
    const int32_t code =
        is_operational
            ? session->data->get_oper_props(session->data, uri.get(), nullptr, props.get())
            : session->data->get_cfg_props(session->data, uri.get(), nullptr, props.get());
    if (code != ORU_OK)
        return "code " + std::to_string(code);
    std::string text;
    EachProperty each(props.get());
    while (ORUDoProperty *property = each())
        text += (text.empty() ? "" : " ") + std::string(oru_do_property_get_name_string(property)) +
                "=" + text_of(oru_do_property_get_value(property));
    return text;
}

std::vector<std::string> Network::query(const std::string &collection,
                                        const std::vector<std::string> &names,
                                        const std::string &where,
                                        const std::vector<std::string> &order, uint32_t count) {
    const Uri uri(oru_do_uri_new(collection.c_str()));
    const NameList wanted = name_list(names);
    const NameList by = name_list(order);
    NameValueList clause;
    if (!where.empty()) {
        ORUDoError *error = nullptr;
        clause = NameValueList(
            oru_do_nvlist_from_json(where.c_str(), static_cast<int32_t>(where.size()), &error));
        EXPECT_TRUE(clause) << where;
        oru_do_error_deref(error);
    }
    ORUDtlCursor *cursor = nullptr;
    query_code =
        session->coll->new_config_cursor(session->coll, uri.get(), wanted.get(), clause.get(),
                                         order.empty() ? nullptr : by.get(), 1, &cursor);
    std::vector<std::string> rows;
    while (query_code == ORU_OK) {
        ORUDoVtable *const table = oru_do_vtable_new();
        query_code = cursor->cursor_get_next(cursor, count, table);
        EachRow each(table);
        const size_t before = rows.size();
        while (ORUDoVlist *row = each()) {
            std::string text;
            EachValue value(row);
            for (size_t i = 0; i < names.size(); i++)
                text += (i == 0 ? "" : " ") + text_of(value());
            rows.push_back(std::move(text));
        }
        EXPECT_TRUE(count == 0 || rows.size() - before <= count);
        oru_do_vtable_deref(table);
    }
    if (cursor != nullptr)
        cursor->cursor_close(cursor);
    return rows;
}

}  // namespace embedded
