#include <cstring>

#include "do/nvlist.h"
#include "oru/nvlist.h"
#include "oru/value.h"

int32_t oru_do_nvlist_equals(ORUDoNvlist *nvlist1, ORUDoNvlist *nvlist2) {
    ORU_REQUIRE(nvlist1);
    ORU_REQUIRE(nvlist2);
    return oru::same_items(
        nvlist1->first, nvlist2->first, [](const ORUDoNvlistItem &a, const ORUDoNvlistItem &b) {
            return std::strcmp(a.name, b.name) == 0 && oru_do_value_equals(a.value, b.value) != 0;
        });
}

void oru_do_nvlist_delete_item(ORUDoNvlist *nvlist, ORUDoNvlistItem *item) {
    ORU_REQUIRE(nvlist);
    if (item == nullptr || item->name == nullptr || item->value == nullptr)
        return;
    oru::delete_items(
        *nvlist,
        [item](const ORUDoNvlistItem &other) {
            return std::strcmp(other.name, item->name) == 0 &&
                   oru_do_value_compare(other.value, item->value) == 0;
        },
        1);
}
