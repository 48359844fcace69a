#ifndef ORU_SRC_DO_PROPERTIES_SETTINGS_H
#define ORU_SRC_DO_PROPERTIES_SETTINGS_H

#include <cstdint>

namespace oru {

// Of all property tables of the process; set at start-up, without a lock.
struct PropertiesSettings {
    uint32_t max_size_before_hash_table = 20;
    uint32_t hash_table_size = 43;
};

extern PropertiesSettings properties_settings;

}  // namespace oru

#endif
