// Named types in packages.
#include <cstdlib>

#include "frame/trace.h"
#include "md/reader.h"
#include "md/records.h"
#include "oru/nvlist.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

using oru::Level;
using oru::PackageReader;
using oru::XmlAttribute;

int32_t code_of_type(const XmlAttribute &type) {
    return type ? oru_do_get_typecode_by_typestr(type.text()) : ORU_DO_TYPE_UNKNOWN;
}

int32_t read_constraints(const PackageReader &reader, const xmlNode *element, int32_t typecode,
                         ORUDoConstraintList *&out) {
    oru::Ref<ORUDoConstraintList> list;
    const int32_t code = oru::read_assertions(reader, element, typecode, list);
    if (code == ORU_OK)
        out = list.release();
    return code;
}

int32_t read_simple(const PackageReader &reader, const xmlNode *element, ORUMdTypedefMeta &type) {
    type.typecode = code_of_type(XmlAttribute(element, "base"));
    return read_constraints(reader, element, type.typecode, type.constraint_list);
}

int32_t add_label(ORUMdTypedefMeta &type, const char *label, int32_t number) {
    if (type.enums == nullptr)
        type.enums = oru_do_nvlist_new();
    ORUDoValue *value = type.enums != nullptr ? oru_do_value_new_int(number) : nullptr;
    const int32_t length = value != nullptr ? oru_do_nvlist_add(type.enums, label, value) : -1;
    oru_do_value_deref(value);
    return length > 0 ? ORU_OK : ORU_RC_MALLOC;
}

int32_t read_enumeration(const xmlNode *element, ORUMdTypedefMeta &type) {
    type.typecode = ORU_DO_TYPE_ENUMERATION;
    for (const xmlNode *child : oru::XmlChildren(element)) {
        const XmlAttribute label(child, "value");
        if (!label)
            continue;
        const XmlAttribute number(child, "intValue");
        const long n = number ? std::strtol(number.text(), nullptr, 10) : -1;
        if (const int32_t code = add_label(type, label.text(), static_cast<int32_t>(n));
            code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

int32_t read_member(const PackageReader &reader, const xmlNode *element, ORUMdTypedefMeta &type) {
    const XmlAttribute name(element, "name");
    const XmlAttribute type_name(element, "type");
    if (!name || !type_name)
        return ORU_OK;
    const oru::ElementPlace place(reader, element);
    auto *member =
        oru_md_add_complex_el_meta(&type, name.text(), type_name.text(), code_of_type(type_name));
    if (member == nullptr)
        return ORU_RC_MALLOC;
    return read_constraints(reader, element, member->typecode, member->constraint_list);
}

int32_t read_complex(const PackageReader &reader, const xmlNode *element, ORUMdTypedefMeta &type) {
    if (element->children == nullptr)
        return ORU_OK;
    for (const xmlNode *form : oru::XmlChildren(element)) {
        const bool is_sequence = oru::xml_is(form, "sequence");
        if (!is_sequence && !oru::xml_is(form, "choice"))
            continue;
        type.typecode = is_sequence ? ORU_DO_TYPE_SEQUENCE : ORU_DO_TYPE_CHOICE;
        for (const xmlNode *member : oru::XmlChildren(form)) {
            if (const int32_t code = read_member(reader, member, type); code != ORU_OK)
                return code;
        }
        return ORU_OK;
    }
    ORU_TRACE(Level::failure, "Complex type doesnot contain sequence or choice.\n");
    return ORU_RC_METADATA;
}

int32_t read_form(const PackageReader &reader, const xmlNode *element, ORUMdTypedefMeta &type) {
    if (oru::xml_is(element, "simpleType"))
        return read_simple(reader, element, type);
    if (oru::xml_is(element, "enumerationType"))
        return read_enumeration(element, type);
    if (oru::xml_is(element, "complexType"))
        return read_complex(reader, element, type);
    return ORU_OK;
}

}  // namespace

int32_t oru::read_typedef(const PackageReader &reader, const xmlNode *element) {
    const XmlAttribute name(element, "name");
    if (!name)
        return ORU_OK;
    const ElementPlace place(reader, element);
    auto *type = oru_md_new_typedef_meta(name.text());
    if (type == nullptr)
        return ORU_RC_MALLOC;
    const int32_t code = read_form(reader, element, *type);
    if (code != ORU_OK) {
        oru_md_delete_typedef_meta(type);
        return code;
    }
    oru_md_add_typedef_meta(reader.package, type);
    return ORU_OK;
}
