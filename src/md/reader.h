// Reading of a package: what its steps share. A step gives a result code; the message that belongs
// to a failure is sent where it is met.
#ifndef ORU_SRC_MD_READER_H
#define ORU_SRC_MD_READER_H

#include "do/name.h"
#include "frame/object.h"
#include "frame/place.h"
#include "frame/text.h"
#include "frame/xml.h"
#include "md/constraint.h"
#include "md/prop_meta.h"
#include "oru/md.h"
#include "oru/mr_meta.h"

namespace oru {

// The package at hand.
struct PackageReader {
    const char *file;
    ORUMdPkgMeta *package;
    bool is_lib;
};

// Tells that the reader stands at an element.
struct ElementPlace : Place {
    ElementPlace(const PackageReader &reader, const xmlNode *element)
        : Place(reader.file, static_cast<int32_t>(xmlGetLineNo(element)), xml_name(element)) {}
};

// Reads a root element into a package of the store. `out_package` is set on success.
int32_t read_package(const char *file, const xmlNode *root, ORUMdMap *store, bool is_lib,
                     ORUMdPkgMeta *&out_package);

// A child of `typeDef`, appended to the package's types.
int32_t read_typedef(const PackageReader &reader, const xmlNode *element);

// The children of `configDataDef` and `operationalDataDef`.
int32_t read_config_definitions(const PackageReader &reader, const xmlNode *element);
int32_t read_oper_definitions(const PackageReader &reader, const xmlNode *element);

int32_t read_mr_definitions(const PackageReader &reader, const xmlNode *element);

// The `assert` children of an element, then its `constraint` attribute; appended to `list`, which
// is made when there is something to append. The type code is that of the element's values.
int32_t read_assertions(const PackageReader &reader, const xmlNode *element, int32_t typecode,
                        Ref<ORUDoConstraintList> &list);

// The same for a property: nothing is read from an empty element, and a failure is only told.
void read_prop_assertions(const PackageReader &reader, const xmlNode *element, ORUDoPropMeta *prop);

// What a library element extends, qualified, or what an implementation's implements; `out` stays
// empty without. False when memory ran out.
bool read_parent_attr(const PackageReader &reader, const xmlNode *element, Text &out);

// What the name of a type or resource means in this package.
Ref<ORUDoName> qualified_name(const PackageReader &reader, const char *text);

// One `configData` or `operationalData` element.
struct CodElement {
    const xmlNode *element;
    int32_t category;
    const char *group;  // the prefix of the attributes' names, or null
    bool nested;        // stands in a resource
    bool persistent;
};

// Reads the attributes of the element into `list`, and those it takes from a definition.
int32_t read_cod(const PackageReader &reader, const CodElement &cod, ORUDoPropMetaList *list,
                 Text &out_parent);

// One attribute or parameter. Null for a faulty one.
Ref<ORUDoPropMeta> read_property(const xmlNode *element, int32_t category, const char *prefix,
                                 bool persistent);

// The ORU_ACCESS_... of a resource: a word, or four letters in brackets; everything for all else.
uint8_t mr_access_of(const XmlAttribute &attribute);

int32_t read_action(const PackageReader &reader, const xmlNode *element,
                    Ref<ORUDoActMetaList> &actions);

// `group.name` in a buffer; false when it does not fit.
constexpr size_t kDottedNameSize = 256;
bool dotted_name(char (&out)[kDottedNameSize], const char *group, const char *name);

}  // namespace oru

#endif
