// What the tests of property tables share.
#ifndef ORU_TESTS_UNIT_DO_PROPERTIES_SUPPORT_H
#define ORU_TESTS_UNIT_DO_PROPERTIES_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "oru/hashtable.h"
#include "oru/iter.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/value.h"

namespace oru::test {

// The settings as they are at start, whatever a test made of them.
inline void restore_properties_settings() {
    oru_do_properties_set_max_size_before_hash_table(20);
    oru_do_properties_set_hash_table_size(43);
}

// The third word of a table: its hash index, null while it has none.
inline ORUHashtable *index_of(const ORUDoProperties *props) {
    void *words[3];
    std::memcpy(words, static_cast<const void *>(props), sizeof words);
    return static_cast<ORUHashtable *>(words[2]);
}

// Names and numbers in the order of a walk; an entry without a value shows as "-".
inline std::string walked(ORUDoProperties *props) {
    std::string text;
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    for (oru_do_properties_iter(props, &iter); oru_do_properties_has_next(&iter);) {
        ORUDoProperty *entry = oru_do_properties_get_next(&iter);
        ORUDoValue *value = oru_do_property_get_value(entry);
        int32_t err = 0;
        text += oru_do_property_get_name_string(entry);
        text += value != nullptr ? std::to_string(oru_do_value_get_int(value, &err)) : "-";
        text += ' ';
    }
    return text;
}

inline void set_int(ORUDoProperties *props, const char *name, int32_t number) {
    ORUDoValue *value = oru_do_value_new_int(number);
    oru_do_properties_set_value(props, name, value);
    oru_do_value_deref(value);
}

inline void set_int(ORUDoProperties *props, const std::string &name, int32_t number) {
    set_int(props, name.c_str(), number);
}

// Entries p0, p1, ... with these numbers.
inline void fill(ORUDoProperties *props, int count) {
    for (int i = 0; i < count; ++i)
        set_int(props, "p" + std::to_string(i), i);
}

class PropertiesTest : public testing::Test {
  protected:
    ~PropertiesTest() override {
        oru_do_properties_deref(props);
        oru_do_properties_deref(other);
        for (ORUDoValue *value : {one, two})
            oru_do_value_deref(value);
        restore_properties_settings();
    }

    // A trace with the table's address.
    std::string line(const char *format) const {
        char text[200];
        std::snprintf(text, sizeof text, format, static_cast<void *>(props));
        return text;
    }

    ORUDoProperties *props = oru_do_properties_new();
    ORUDoProperties *other = oru_do_properties_new();
    ORUDoValue *one = oru_do_value_new_int(1);
    ORUDoValue *two = oru_do_value_new_int(2);
};

}  // namespace oru::test

#endif
