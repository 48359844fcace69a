#include "do/properties_list.h"

#include "do/properties.h"
#include "oru/properties_list.h"

namespace {

using Item = ORUDoPropertiesListItem;

Item *make_item(ORUDoProperties *properties) {
    Item *item = properties != nullptr ? oru::make_element<Item>() : nullptr;
    if (item == nullptr)
        return nullptr;
    item->properties = oru::ref(properties);
    item->ref_count = 1;
    return item;
}

}  // namespace

void oru::ObjectType<ORUDoPropertiesListItem>::release_members(ORUDoPropertiesListItem &self) {
    deref(self.properties);
}

ORUDoProperties *oru_do_properties_list_get(ORUDoPropertiesList *properties_list, int32_t index) {
    ORU_REQUIRE(properties_list);
    const Item *item = oru::chain(*properties_list).at(index);
    return item != nullptr ? item->properties : nullptr;
}

ORUDoProperties *oru_do_properties_list_get_next(ORUDoIter *iter) {
    const Item *item = oru::iter_advance<Item>(iter);
    return item != nullptr ? item->properties : nullptr;
}

int32_t oru_do_properties_list_add(ORUDoPropertiesList *properties_list,
                                   ORUDoProperties *properties) {
    ORU_REQUIRE(properties_list);
    return oru::append_item(*properties_list, make_item(properties));
}

void oru_do_properties_list_clear(ORUDoPropertiesList *properties_list) {
    ORU_REQUIRE(properties_list);
    oru::release_items(*properties_list);
}

ORU_LIST_API(ORUDoPropertiesList, ORUDoPropertiesListItem, oru_do_properties_list, properties_list,
             DO_COLL_PROPERTIES_LIST)
ORU_LIST_READ_API(ORUDoPropertiesList, oru_do_properties_list, properties_list,
                  DO_COLL_PROPERTIES_LIST)
