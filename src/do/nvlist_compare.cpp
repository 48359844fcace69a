#include <cstring>

#include "do/nvlist.h"
#include "do/value.h"
#include "oru/nvlist.h"

namespace {

// Ordering reads what the first value holds from the second too, so two values that hold objects
// of different kinds are kept apart from it. They never compare as 0.
bool compare_as_same(ORUDoValue &a, ORUDoValue &b) {
    const bool lists = a.type == ORU_DO_TYPE_CHOICE || a.type == ORU_DO_TYPE_SEQUENCE ||
                       a.type == ORU_DO_TYPE_ARRAY || a.type == ORU_DO_TYPE_BITS;
    if (lists && a.type != b.type)
        return false;
    if (oru_do_is_uri_type(a.type) != oru_do_is_uri_type(b.type))
        return false;
    return oru_do_value_compare(&a, &b) == 0;
}

}  // namespace

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
                   compare_as_same(*other.value, *item->value);
        },
        1);
}
