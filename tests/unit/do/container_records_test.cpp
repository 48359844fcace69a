// The records of lists and property tables, as a program that was compiled apart takes them to be:
// their fields stand in this order.
#include <gtest/gtest.h>

#include <string>

#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/typedef_meta.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "tests/support/printed.h"

namespace {

using oru::test::printed;

template <class Item>
struct ListImage {
    Item *first;
    Item *last;
    uint32_t count;
    uint32_t ref_count;
};

struct NvlistItemImage {
    const char *name;
    ORUDoValue *value;
    NvlistItemImage *next;
    uint32_t ref_count;
    char inline_name[32];
};

template <class Held>
struct ItemImage {
    Held *held;
    ItemImage *next;
    uint32_t ref_count;
};

struct NtlistItemImage {
    ORUDoName *name;
    ORUDoTypedefMeta *typedef_meta;
    NtlistItemImage *next;
    int32_t type_code;
    uint32_t ref_count;
};

struct PropertyImage {
    ORUDoName *name;
    ORUDoValue *value;
    PropertyImage *prev;
    PropertyImage *next;
    uint32_t ref_count;
};

struct PropertiesImage {
    PropertyImage *first;
    PropertyImage *last;
    ORUHashtable *hash_table;
    uint32_t ref_count;
    uint32_t count;
};

template <class Image, class Record>
Image &image_of(Record *record) {
    return *reinterpret_cast<Image *>(record);
}

// Two items, the list shared once more.
template <class Item, class Record>
void expect_head(Record *record, ListImage<Item> &image) {
    EXPECT_EQ(static_cast<void *>(&image), record);
    ASSERT_NE(image.first, nullptr);
    EXPECT_EQ(image.first->next, image.last);
    EXPECT_EQ(image.last->next, nullptr);
    EXPECT_EQ(image.count, 2u);
    EXPECT_EQ(image.ref_count, 2u);
    EXPECT_EQ(image.first->ref_count, 1u);
    EXPECT_EQ(image.last->ref_count, 1u);
}

class ContainerRecords : public testing::Test {
  protected:
    ~ContainerRecords() override {
        for (ORUDoValue *value : {one, two})
            oru_do_value_deref(value);
        for (ORUDoName *name : {a, b})
            oru_do_name_deref(name);
    }

    ORUDoValue *one = oru_do_value_new_int(1);
    ORUDoValue *two = oru_do_value_new_int(2);
    ORUDoName *a = oru_do_name_new("a");
    ORUDoName *b = oru_do_name_new("b");
};

TEST_F(ContainerRecords, NamedValues) {
    const std::string fits(31, 'n');
    const std::string longer(32, 'n');
    ORUDoNvlist *list = oru_do_nvlist_ref(oru_do_nvlist_new());
    oru_do_nvlist_add(list, fits.c_str(), one);
    oru_do_nvlist_add(list, longer.c_str(), two);
    auto &image = image_of<ListImage<NvlistItemImage>>(list);
    expect_head(list, image);
    EXPECT_EQ(image.first->name, image.first->inline_name);
    EXPECT_EQ(image.first->inline_name, fits);
    EXPECT_EQ(image.first->value, one);
    EXPECT_NE(image.last->name, image.last->inline_name);
    EXPECT_EQ(image.last->name, longer);
    EXPECT_EQ(image.last->value, two);
    oru_do_nvlist_delete_all(list, fits.c_str());
    oru_do_nvlist_delete_all(list, longer.c_str());
    EXPECT_EQ(image.first, nullptr);
    EXPECT_EQ(image.last, nullptr);
    EXPECT_EQ(image.count, 0u);
    oru_do_nvlist_deref(list);
    oru_do_nvlist_deref(list);
}

TEST_F(ContainerRecords, Values) {
    ORUDoVlist *list = oru_do_vlist_ref(oru_do_vlist_new());
    oru_do_vlist_add(list, one);
    oru_do_vlist_add(list, two);
    auto &image = image_of<ListImage<ItemImage<ORUDoValue>>>(list);
    expect_head(list, image);
    EXPECT_EQ(image.first->held, one);
    EXPECT_EQ(image.last->held, two);
    oru_do_vlist_deref(list);
    oru_do_vlist_deref(list);
}

TEST_F(ContainerRecords, Names) {
    ORUDoNlist *list = oru_do_nlist_ref(oru_do_nlist_new());
    oru_do_nlist_add(list, a);
    oru_do_nlist_add(list, b);
    auto &image = image_of<ListImage<ItemImage<ORUDoName>>>(list);
    expect_head(list, image);
    EXPECT_EQ(image.first->held, a);
    EXPECT_EQ(image.last->held, b);
    oru_do_nlist_deref(list);
    oru_do_nlist_deref(list);
}

TEST_F(ContainerRecords, TypedNames) {
    ORUDoNtlist *list = oru_do_ntlist_ref(oru_do_ntlist_new());
    ORUDoTypedefMeta *meta = oru_do_typedef_meta_new_builtin(8, nullptr);
    oru_do_ntlist_add_builtin_type(list, a, 5, nullptr);
    oru_do_ntlist_add_typedef_meta(list, b, meta);
    auto &image = image_of<ListImage<NtlistItemImage>>(list);
    expect_head(list, image);
    EXPECT_EQ(image.first->name, a);
    EXPECT_EQ(image.first->type_code, 5);
    EXPECT_NE(image.first->typedef_meta, nullptr);
    EXPECT_EQ(image.last->name, b);
    EXPECT_EQ(image.last->type_code, -3);
    EXPECT_EQ(image.last->typedef_meta, meta);
    oru_do_typedef_meta_deref(meta);
    oru_do_ntlist_deref(list);
    oru_do_ntlist_deref(list);
}

TEST_F(ContainerRecords, PropertyTablesInAList) {
    ORUDoPropertiesList *list = oru_do_properties_list_ref(oru_do_properties_list_new());
    ORUDoProperties *first = oru_do_properties_new();
    ORUDoProperties *last = oru_do_properties_new();
    oru_do_properties_list_add(list, first);
    oru_do_properties_list_add(list, last);
    auto &image = image_of<ListImage<ItemImage<ORUDoProperties>>>(list);
    expect_head(list, image);
    EXPECT_EQ(image.first->held, first);
    EXPECT_EQ(image.last->held, last);
    oru_do_properties_deref(first);
    oru_do_properties_deref(last);
    oru_do_properties_list_deref(list);
    oru_do_properties_list_deref(list);
}

TEST_F(ContainerRecords, Properties) {
    ORUDoProperties *props = oru_do_properties_ref(oru_do_properties_new());
    oru_do_properties_set_value_n(props, a, one);
    oru_do_properties_set_value_n(props, b, two);
    auto &image = image_of<PropertiesImage>(props);
    ASSERT_NE(image.first, nullptr);
    EXPECT_EQ(image.first->name, a);
    EXPECT_EQ(image.first->value, one);
    EXPECT_EQ(image.first->prev, nullptr);
    EXPECT_EQ(image.first->next, image.last);
    EXPECT_EQ(image.first->ref_count, 1u);
    EXPECT_EQ(image.last->name, b);
    EXPECT_EQ(image.last->value, two);
    EXPECT_EQ(image.last->prev, image.first);
    EXPECT_EQ(image.last->next, nullptr);
    EXPECT_EQ(image.hash_table, nullptr);
    EXPECT_EQ(image.ref_count, 2u);
    EXPECT_EQ(image.count, 2u);
    oru_do_properties_deref(props);
    oru_do_properties_deref(props);
}

// ---- What only a record that was written to from outside can hold ----

TEST_F(ContainerRecords, AnItemWithoutNameOrValueDeletesNothing) {
    ORUDoNvlist *list = oru_do_nvlist_new_from_item("x", one);
    NvlistItemImage without_value{"x", nullptr, nullptr, 1, {}};
    NvlistItemImage without_name{nullptr, one, nullptr, 1, {}};
    for (NvlistItemImage *item : {&without_value, &without_name}) {
        oru_do_nvlist_delete_item(list, reinterpret_cast<ORUDoNvlistItem *>(item));
        EXPECT_EQ(oru_do_nvlist_get_len(list), 1);
    }
    NvlistItemImage complete{"x", one, nullptr, 1, {}};
    oru_do_nvlist_delete_item(list, reinterpret_cast<ORUDoNvlistItem *>(&complete));
    EXPECT_EQ(oru_do_nvlist_get_len(list), 0);
    oru_do_nvlist_deref(list);
}

TEST_F(ContainerRecords, EntriesWithoutAValueHaveNoPartInTheTypeOfAList) {
    ORUDoVlist *list = oru_do_vlist_new();
    for (int i = 0; i < 3; ++i)
        oru_do_vlist_add_int(list, i);
    ItemImage<ORUDoValue> *item = image_of<ListImage<ItemImage<ORUDoValue>>>(list).first;
    for (int i = 0; i < 3; ++i, item = item->next) {
        EXPECT_EQ(oru_do_vlist_get_member_type(list), 5);
        oru_do_value_deref(item->held);
        item->held = nullptr;
    }
    EXPECT_EQ(oru_do_vlist_get_member_type(list), -3);
    EXPECT_EQ(printed<oru_do_vlist_to_strbuf>(list), "[\n,\n,\n\n]\n");
    oru_do_vlist_deref(list);
}

}  // namespace
