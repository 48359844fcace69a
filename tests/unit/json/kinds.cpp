#include "tests/unit/json/kinds.h"

#include "oru/config_op.h"
#include "oru/constraint.h"
#include "oru/dtree.h"
#include "oru/event.h"
#include "oru/mr_meta.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/prop_meta.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/rows_properties.h"
#include "oru/typedef_meta.h"
#include "oru/vlist.h"
#include "oru/vtable.h"
#include "oru/xml.h"
#include "tests/unit/json/support.h"

namespace oru::test {
namespace {

template <class Object, int32_t (*write)(Object *, ORUDoStrbuf *, uint32_t)>
int32_t json(void *object, ORUDoStrbuf *buf, uint32_t options) {
    return write(static_cast<Object *>(object), buf, options);
}

// A writer that takes no options.
template <class Object, int32_t (*write)(Object *, ORUDoStrbuf *)>
int32_t json(void *object, ORUDoStrbuf *buf, uint32_t) {
    return write(static_cast<Object *>(object), buf);
}

template <class Object, Object *(*reader)(const char *, int32_t, ORUDoError **)>
void *read(const char *text, int32_t length, ORUDoError **errp) {
    return reader(text, length, errp);
}

template <class Object, void (*deref)(Object *)>
void release(void *object) {
    deref(static_cast<Object *>(object));
}

int32_t value_xml(void *object, ORUDoStrbuf *buf, uint32_t options) {
    return oru_do_value_to_xml_opt(nullptr, "v", static_cast<ORUDoValue *>(object), buf, options);
}

int32_t vlist_json(ORUDoVlist *list, ORUDoStrbuf *buf, uint32_t options) {
    return oru_do_vlist_to_json_opt(list, buf, options, nullptr);
}

int32_t vlist_xml(void *object, ORUDoStrbuf *buf, uint32_t options) {
    return oru_do_vlist_to_xml_opt(nullptr, nullptr, nullptr, static_cast<ORUDoVlist *>(object),
                                   buf, options);
}

int32_t error_xml(void *object, ORUDoStrbuf *buf, uint32_t) {
    return oru_do_error_to_xml(nullptr, static_cast<ORUDoError *>(object), buf);
}

int32_t prop_errs_xml(void *object, ORUDoStrbuf *buf, uint32_t) {
    return oru_do_prop_errs_to_xml(nullptr, static_cast<ORUDoPropErrs *>(object), buf);
}

int32_t event_xml(void *object, ORUDoStrbuf *buf, uint32_t) {
    return oru_do_event_to_xml(nullptr, nullptr, static_cast<ORUDoEvent *>(object), buf);
}

int32_t dtree_xml(void *object, ORUDoStrbuf *buf, uint32_t options) {
    return oru_do_dtree_to_xml_opt(0, "o:", "e:", static_cast<ORUDoDtree *>(object), buf, options);
}

template <class Object,
          int32_t (*write)(const char *, const char *, Object *, ORUDoStrbuf *, uint32_t)>
int32_t xml(void *object, ORUDoStrbuf *buf, uint32_t options) {
    return write(nullptr, nullptr, static_cast<Object *>(object), buf, options);
}

// Lists of errors and sets of rows have no form of their own: that of each, a line each.
void begin_line(ORUDoStrbuf *buf) {
    if (oru_do_strbuf_get_len(buf) > 0)
        oru_do_strbuf_add_char(buf, '\n');
}

int32_t error_list_json(void *object, ORUDoStrbuf *buf, uint32_t) {
    ORUDoIter iter;
    oru_do_error_list_iter(static_cast<ORUDoErrorList *>(object), &iter);
    while (ORUDoError *err = oru_do_error_list_get_next(&iter)) {
        begin_line(buf);
        oru_do_error_to_json(err, buf);
    }
    return 0;
}

int32_t rows_json(void *object, ORUDoStrbuf *buf, uint32_t options) {
    ORUDoRowProperty *row =
        oru_do_rows_property_get_first(static_cast<ORUDoRowProperties *>(object));
    for (; row != nullptr; row = oru_do_rows_property_get_next(row)) {
        ORUDoProperties *props = oru_do_rows_property_get_properties(row);
        begin_line(buf);
        oru_do_properties_to_json_opt(props, buf, options);
        oru_do_properties_deref(props);
    }
    return 0;
}

}  // namespace

#define JSON(Object, writer) json<Object, writer>
#define READ(Object, name) read<Object, oru_do_##name##_from_json>
#define RELEASE(Object, name) release<Object, oru_do_##name##_deref>
#define KIND(Object, name, writer, xml_form) \
    { #name, JSON(Object, writer), xml_form, READ(Object, name), RELEASE(Object, name) }

const Kind kValue = KIND(ORUDoValue, value, oru_do_value_to_json_opt, value_xml);
const Kind kProperties = KIND(ORUDoProperties, properties, oru_do_properties_to_json_opt,
                              (xml<ORUDoProperties, oru_do_properties_to_xml_opt>));
const Kind kPropertiesList =
    KIND(ORUDoPropertiesList, properties_list, oru_do_properties_list_to_json_opt,
         (xml<ORUDoPropertiesList, oru_do_properties_list_to_xml_opt>));
const Kind kNlist = KIND(ORUDoNlist, nlist, oru_do_nlist_to_json, nullptr);
const Kind kNvlist = KIND(ORUDoNvlist, nvlist, oru_do_nvlist_to_json_opt,
                          (xml<ORUDoNvlist, oru_do_nvlist_to_xml_opt>));
const Kind kVlist = KIND(ORUDoVlist, vlist, vlist_json, vlist_xml);
const Kind kVtable = KIND(ORUDoVtable, vtable, oru_do_vtable_to_json_opt,
                          (xml<ORUDoVtable, oru_do_vtable_to_xml_opt>));
const Kind kNtlist = KIND(ORUDoNtlist, ntlist, oru_do_ntlist_to_json, nullptr);
const Kind kTypedefMeta =
    KIND(ORUDoTypedefMeta, typedef_meta, oru_do_typedef_meta_to_json, nullptr);
const Kind kConstraint = KIND(ORUDoConstraint, constraint, oru_do_constraint_to_json, nullptr);
const Kind kConstraintList =
    KIND(ORUDoConstraintList, constraint_list, oru_do_constraint_list_to_json, nullptr);
const Kind kPropMeta = KIND(ORUDoPropMeta, prop_meta, oru_do_prop_meta_to_json, nullptr);
const Kind kPropMetaList =
    KIND(ORUDoPropMetaList, prop_meta_list, oru_do_prop_meta_list_to_json, nullptr);
const Kind kMrMeta = KIND(ORUDoMrMeta, mr_meta, oru_do_mr_meta_to_json, nullptr);
const Kind kMrMetaList = KIND(ORUDoMrMetaList, mr_meta_list, oru_do_mr_meta_list_to_json, nullptr);
const Kind kConfigOps = KIND(ORUDoConfigOps, config_ops, oru_do_config_ops_to_json_opt, nullptr);
const Kind kError = KIND(ORUDoError, error, oru_do_error_to_json, error_xml);
const Kind kPropErrs = KIND(ORUDoPropErrs, prop_errs, oru_do_prop_errs_to_json, prop_errs_xml);
const Kind kEvent = KIND(ORUDoEvent, event, oru_do_event_to_json_opt, event_xml);
const Kind kDtree = KIND(ORUDoDtree, dtree, oru_do_dtree_to_json, dtree_xml);
const Kind kErrorList = {"error_list", error_list_json, nullptr, nullptr,
                         RELEASE(ORUDoErrorList, error_list)};
const Kind kRows = {"rows_properties", rows_json, nullptr, nullptr,
                    RELEASE(ORUDoRowProperties, rows_properties)};

#undef JSON
#undef READ
#undef RELEASE
#undef KIND

const Kind *kind_named(std::string_view name) {
    static const Kind *const kKinds[] = {
        &kValue,        &kProperties, &kPropertiesList, &kNlist,      &kNvlist,   &kVlist,
        &kVtable,       &kNtlist,     &kTypedefMeta,    &kConstraint, &kPropMeta, &kConstraintList,
        &kPropMetaList, &kMrMeta,     &kMrMetaList,     &kConfigOps,  &kError,    &kPropErrs,
        &kEvent,        &kDtree,      &kErrorList,      &kRows};
    for (const Kind *kind : kKinds) {
        if (kind->name == name)
            return kind;
    }
    return nullptr;
}

std::string written_again(const Kind &kind, const std::string &text, uint32_t options) {
    ORUDoError *err = nullptr;
    void *object = kind.read(text.data(), size_of(text), &err);
    const Error owned(err);
    if (object == nullptr)
        return err == nullptr ? "no object"
                              : "no object, code " + std::to_string(oru_do_error_get_code(err));
    const std::string again =
        written([&](ORUDoStrbuf *buf) { return kind.json(object, buf, options); });
    kind.release(object);
    return again;
}

}  // namespace oru::test
