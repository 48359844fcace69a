#include "do/properties_settings.h"

#include <algorithm>

#include "frame/trace.h"
#include "oru/properties.h"

oru::PropertiesSettings oru::properties_settings;

void oru_do_properties_set_max_size_before_hash_table(uint32_t count) {
    ORU_TRACE(oru::Level::detail, "set max size before ht %u", count);
    oru::properties_settings.max_size_before_hash_table = count;
}

void oru_do_properties_set_hash_table_size(uint32_t size) {
    ORU_TRACE(oru::Level::detail, "set ht size to %u", size);
    oru::properties_settings.hash_table_size = std::max(size, uint32_t{1});
}
