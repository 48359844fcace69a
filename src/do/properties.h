#ifndef ORU_SRC_DO_PROPERTIES_H
#define ORU_SRC_DO_PROPERTIES_H

#include "frame/object.h"
#include "oru/properties.h"

struct ORUDoProperty {
    ORUDoName *name;
    ORUDoValue *value;  // null after oru_do_properties_reset_values
    ORUDoProperty *prev;
    ORUDoProperty *next;
    uint32_t ref_count;  // always 1: the table owns its entries alone
};

struct ORUDoProperties {
    ORUDoProperty *first;
    ORUDoProperty *last;
    ORUHashtable *hash_table;  // from the texts of the names to the entries; null while small
    uint32_t ref_count;
    uint32_t count;
};

template <>
struct oru::ObjectType<ORUDoProperty> {
    static constexpr const char *name = "oru_do_property";
    static constexpr Tag tag = Tag::property;
};

template <>
struct oru::ObjectType<ORUDoProperties> {
    static constexpr const char *name = "oru_do_properties";
    static constexpr Tag tag = Tag::props;
    static auto &count(ORUDoProperties &self) { return self.ref_count; }
    static void release_members(ORUDoProperties &self);
};

#endif
