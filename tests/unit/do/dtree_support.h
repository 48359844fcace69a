// A tree with helpers to grow it by texts and to read it back as texts.
#ifndef ORU_TESTS_UNIT_DO_DTREE_SUPPORT_H
#define ORU_TESTS_UNIT_DO_DTREE_SUPPORT_H

#include <gtest/gtest.h>

#include <string>

#include "oru/dtree.h"
#include "oru/error.h"
#include "oru/name.h"
#include "oru/properties.h"
#include "oru/uri.h"
#include "oru/value.h"

namespace oru::test {

class Dtree : public testing::Test {
  protected:
    ~Dtree() override {
        oru_do_error_deref(error);
        oru_do_dtree_deref(root);
    }

    static ORUDoDtree *add(ORUDoDtree *parent, const char *name) {
        ORUDoName *object = oru_do_name_new(name);
        ORUDoDtree *child = oru_do_dtree_add_child(parent, object);
        oru_do_name_deref(object);
        return child;
    }

    static void set_uri(ORUDoDtree *node, const char *text) {
        ORUDoUri *uri = oru_do_uri_new(text);
        oru_do_dtree_set_mr_uri(node, uri);
        oru_do_uri_deref(uri);
    }

    static void set(ORUDoDtree *node, const char *name, int32_t n) {
        ORUDoValue *value = oru_do_value_new_int(n);
        oru_do_dtree_set_value(node, name, value);
        oru_do_value_deref(value);
    }

    static int32_t number(ORUDoValue *value) {
        int32_t rc = 0;
        return value != nullptr ? oru_do_value_get_int(value, &rc) : -1;
    }

    static std::string name_of(ORUDoDtree *node) {
        return node != nullptr ? oru_do_name_get_strname(oru_do_dtree_get_name(node)) : "null";
    }

    // The children, hidden ones too.
    static std::string children_of(ORUDoDtree *node) {
        std::string names;
        for (int32_t i = 0; i < oru_do_dtree_get_child_count(node); ++i)
            names += name_of(oru_do_dtree_get_child(node, i)) + " ";
        return names;
    }

    static std::string attributes_of(ORUDoDtree *node) {
        std::string names;
        ORUDoIter iter;
        oru_do_properties_iter(oru_do_dtree_get_properties(node), &iter);
        while (ORUDoProperty *entry = oru_do_properties_get_next(&iter))
            names += std::string(oru_do_property_get_name_string(entry)) + " ";
        return names;
    }

    ORUDoDtree *root = oru_do_dtree_new_str("r");
    ORUDoError *error = nullptr;
};

}  // namespace oru::test

#endif
