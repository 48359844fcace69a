/* Counted objects of the library, owned by scope. */
#ifndef EMBEDDED_HANDLES_H
#define EMBEDDED_HANDLES_H

#include "support/handles.h"

namespace embedded {

using namespace handles;

/* Sets a property, which tells by nothing else that memory ran out. */
inline void set_property(ORUDoProperties *props, ORUDoName *name, const Value &value) {
    oru_do_properties_set_value_n(props, name, value.get());
    if (oru_do_properties_get_value_n(props, name) != value.get())
        throw std::bad_alloc();
}

/* A table of operations that knows whom it belongs to: callers hand back the address of the table.
 */
template <typename Table, typename Owner>
struct OwnedTable {
    Table table = {};
    Owner *owner = nullptr;

    static Owner &of(Table *table) { return *reinterpret_cast<OwnedTable *>(table)->owner; }
};

}  // namespace embedded

#endif
