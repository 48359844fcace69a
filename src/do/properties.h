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

namespace oru {

// The first entry of that name, or null.
ORUDoProperty *properties_find(const ORUDoProperties &properties, const char *name);

// Adds an entry behind the last, counting name and value; a null value asserts "val". No name is
// looked for, but once there is an index a name that is there already is fatal.
void properties_append(ORUDoProperties &properties, ORUDoName *name, ORUDoValue *value);

// The same with references that the caller gives away. False when memory runs out.
bool properties_hand_over(ORUDoProperties &properties, Ref<ORUDoName> name, Ref<ORUDoValue> value);

// Replaces the value of the entry of that name, which a null value leaves as it is, or appends an
// entry with a name of its own. A name that cannot be had drops the value.
void properties_set(ORUDoProperties &properties, const char *name, ORUDoValue *value);

}  // namespace oru

#endif
