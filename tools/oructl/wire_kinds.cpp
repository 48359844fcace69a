#include "wire_kinds.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "object_text.h"

namespace oructl {
namespace {

// An object of the type that it is passed as.
struct Any {
    void *object;
    template <class Object>
    operator Object *() const {
        return static_cast<Object *>(object);
    }
};

template <auto Write>
void json(void *object, ORUDoStrbuf *buf, uint32_t options) {
    if constexpr (std::is_invocable_v<decltype(Write), Any, ORUDoStrbuf *, uint32_t>)
        Write(Any{object}, buf, options);
    else
        Write(Any{object}, buf);
}

void vlist_json(void *object, ORUDoStrbuf *buf, uint32_t options) {
    if ((options & ORU_JSON_OPT_COMPACT) == 0)
        options |= ORU_JSON_OPT_VLIST;
    oru_do_vlist_to_json_opt(static_cast<ORUDoVlist *>(object), buf, options, nullptr);
}

void value_xml(void *object, ORUDoStrbuf *buf, int32_t) {
    oru_do_value_to_xml(nullptr, nullptr, static_cast<ORUDoValue *>(object), buf);
}

template <auto Write>
void xml(void *object, ORUDoStrbuf *buf, int32_t) {
    if constexpr (std::is_invocable_v<decltype(Write), const char *, const char *, Any,
                                      ORUDoStrbuf *>)
        Write(nullptr, nullptr, Any{object}, buf);
    else
        Write(nullptr, Any{object}, buf);
}

void vlist_xml(void *object, ORUDoStrbuf *buf, int32_t) {
    oru_do_vlist_to_xml(nullptr, nullptr, nullptr, static_cast<ORUDoVlist *>(object), buf);
}

void dtree_xml(void *object, ORUDoStrbuf *buf, int32_t indent) {
    oru_do_dtree_to_xml_tab(indent, nullptr, nullptr, static_cast<ORUDoDtree *>(object), buf);
}

template <auto Write>
void text(void *object, ORUDoStrbuf *buf, int32_t tabs) {
    if constexpr (std::is_invocable_v<decltype(Write), Any, int32_t, ORUDoStrbuf *>) {
        Write(Any{object}, tabs, buf);
    } else {
        oru_do_strbuf_add_tab(buf, tabs);
        Write(Any{object}, buf);
    }
}

constexpr Kind kKinds[] = {
    {nullptr, json<oru_do_value_to_json_opt>, value_xml, text<oru_do_value_to_strbuf>},
    {"%properties", json<oru_do_properties_to_json_opt>, xml<oru_do_properties_to_xml>,
     text<oru_do_properties_to_strbuf>},
    {"%properties_list", json<oru_do_properties_list_to_json_opt>,
     xml<oru_do_properties_list_to_xml>, text<oru_do_properties_list_to_strbuf>},
    {"%nlist", json<oru_do_nlist_to_json>, nullptr, text<oru_do_nlist_to_strbuf>},
    {"%nvlist", json<oru_do_nvlist_to_json_opt>, xml<oru_do_nvlist_to_xml>,
     text<oru_do_nvlist_to_strbuf>},
    {"%vlist", vlist_json, vlist_xml, text<oru_do_vlist_to_strbuf>},
    {"%vtable", json<oru_do_vtable_to_json_opt>, xml<oru_do_vtable_to_xml>,
     text<oru_do_vtable_to_strbuf>},
    {"%error", json<oru_do_error_to_json>, xml<oru_do_error_to_xml>, text<oru_do_error_to_strbuf>},
    {"%prop_errs", json<oru_do_prop_errs_to_json>, xml<oru_do_prop_errs_to_xml>,
     text<oru_do_prop_errs_to_strbuf>},
    {"%event", json<oru_do_event_to_json_opt>, xml<oru_do_event_to_xml>,
     text<oru_do_event_to_strbuf>},
    {"%dtree", json<oru_do_dtree_to_json>, dtree_xml, text<dtree_text>},
    {"%config_ops", json<oru_do_config_ops_to_json_opt>, nullptr,
     text<oru_do_config_ops_to_strbuf>},
    {"%ntlist", json<oru_do_ntlist_to_json>, nullptr, text<ntlist_text>},
    {"%typedef_meta", json<oru_do_typedef_meta_to_json>, nullptr, text<typedef_text>},
    {"%constraint", json<oru_do_constraint_to_json>, nullptr, text<oru_do_constraint_to_strbuf>},
    {"%constraint_list", json<oru_do_constraint_list_to_json>, nullptr,
     text<oru_do_constraint_list_to_strbuf>},
    {"%prop_meta", json<oru_do_prop_meta_to_json>, nullptr, text<prop_meta_text>},
    {"%prop_meta_list", json<oru_do_prop_meta_list_to_json>, nullptr, text<prop_meta_list_text>},
    {"%mr_meta", json<oru_do_mr_meta_to_json>, nullptr, text<mr_meta_text>},
    {"%mr_meta_list", json<oru_do_mr_meta_list_to_json>, nullptr, text<mr_meta_list_text>},
};

// The types whose tags find the rows of their lists.
constexpr struct {
    const char *tag;
    int64_t code;
} kUntaggedCodes[] = {{"%mr_meta", 0x400109}, {"%prop_meta", 0x40010B}, {"%constraint", 0x40010E}};

}  // namespace

const Kind &kind_of(const Form *form) {
    if (form == nullptr)
        return kKinds[0];
    return *std::ranges::find_if(kKinds + 1, std::end(kKinds), [&](const Kind &kind) {
        return std::strcmp(kind.tag, form->tag) == 0;
    });
}

int64_t expected_code(const Form *form) {
    if (form == nullptr)
        return 0;
    for (const auto &[tag, code] : kUntaggedCodes) {
        if (std::strcmp(tag, form->tag) == 0)
            return code;
    }
    return oru_json_get_type_info(form->tag, static_cast<int32_t>(std::strlen(form->tag)))
        ->type_code;
}

}  // namespace oructl
