#include "do/nvlist.h"

#include <cstring>

#include "do/value.h"
#include "frame/text.h"
#include "oru/nvlist.h"

namespace {

bool store_name(ORUDoNvlistItem &item, const char *name, size_t length) {
    if (length < sizeof item.inline_name) {
        std::memcpy(item.inline_name, name, length);
        item.inline_name[length] = '\0';
        item.name = item.inline_name;
    } else {
        item.name = oru::duplicate(name, length);
    }
    return item.name != nullptr;
}

// An item without a value yet.
ORUDoNvlistItem *make_named_item(const char *name, size_t length) {
    auto *item = oru::make_element<ORUDoNvlistItem>();
    if (item == nullptr)
        return nullptr;
    item->ref_count = 1;
    if (!store_name(*item, name, length)) {
        oru::free_element(item);
        return nullptr;
    }
    return item;
}

// A negative length cannot be had.
ORUDoNvlistItem *make_item(const char *name, int64_t length, ORUDoValue *value) {
    if (name == nullptr || value == nullptr || length < 0)
        return nullptr;
    auto *item = make_named_item(name, static_cast<size_t>(length));
    if (item != nullptr)
        item->value = oru::ref(value);
    return item;
}

ORUDoNvlistItem *make_item(const char *name, ORUDoValue *value) {
    return make_item(name, name != nullptr ? static_cast<int64_t>(std::strlen(name)) : 0, value);
}

int32_t insert_item(ORUDoNvlist &nvlist, ORUDoNvlistItem *item, int32_t pos) {
    if (item == nullptr)
        return -1;
    oru::chain(nvlist).insert_at(pos, item);
    return static_cast<int32_t>(nvlist.count);
}

auto has_name(const char *name) {
    return [name](const ORUDoNvlistItem &item) { return std::strcmp(item.name, name) == 0; };
}

}  // namespace

void oru::ObjectType<ORUDoNvlistItem>::release_members(ORUDoNvlistItem &self) {
    if (self.name != self.inline_name)
        ph_free_named(self.name);
    deref(self.value);
}

int32_t oru::nvlist_hand_over(ORUDoNvlist &nvlist, std::string_view name, ORUDoValue *value) {
    auto given = Ref<ORUDoValue>::adopt(value);
    if (!given)
        return -1;
    if (trace_enabled(Level::reference)) [[unlikely]]
        return append_item(nvlist,
                           make_item(name.data(), static_cast<int64_t>(name.size()), value));
    auto *item = make_named_item(name.data(), name.size());
    if (item != nullptr)
        item->value = given.release();
    return append_item(nvlist, item);
}

ORUDoNvlist *oru_do_nvlist_new_from_item(const char *name, ORUDoValue *value) {
    ORUDoNvlist *nvlist = oru_do_nvlist_new();
    if (nvlist != nullptr)
        oru::append_item(*nvlist, make_item(name, value));
    return nvlist;
}

ORUDoNvlist *oru_do_nvlist_clone(ORUDoNvlist *nvlist) {
    ORU_REQUIRE(nvlist);
    auto copy = oru::make_ref<ORUDoNvlist>();
    if (!copy)
        return nullptr;
    const bool complete = oru::chain(*nvlist).each([&copy](const ORUDoNvlistItem &item) {
        const auto value = oru::Ref<ORUDoValue>::adopt(oru_do_value_clone(item.value));
        return oru::append_item(*copy, make_item(item.name, value.get())) != -1;
    });
    return complete ? copy.release() : nullptr;
}

ORUDoNvlistItem *oru_do_nvlist_get_item(ORUDoNvlist *nvlist, int32_t index) {
    ORU_REQUIRE(nvlist);
    return oru::chain(*nvlist).at(index);
}

ORUDoNvlistItem *oru_do_nvlist_get_item_by_name(ORUDoNvlist *nvlist, const char *name) {
    ORU_REQUIRE(nvlist);
    ORU_REQUIRE(name);
    return oru::chain(*nvlist).find(has_name(name));
}

ORUDoValue *oru_do_nvlist_get_value(ORUDoNvlist *nvlist, const char *name) {
    const ORUDoNvlistItem *item = oru_do_nvlist_get_item_by_name(nvlist, name);
    return item != nullptr ? item->value : nullptr;
}

const char *oru_do_nvlist_item_get_name(ORUDoNvlistItem *item) {
    ORU_REQUIRE(item);
    return item->name;
}

ORUDoValue *oru_do_nvlist_item_get_value(ORUDoNvlistItem *item) {
    ORU_REQUIRE(item);
    return item->value;
}

ORUDoNvlistItem *oru_do_nvlist_get_next(ORUDoIter *iter) {
    return oru::iter_advance<ORUDoNvlistItem>(iter);
}

int32_t oru_do_nvlist_add(ORUDoNvlist *nvlist, const char *name, ORUDoValue *value) {
    ORU_REQUIRE(nvlist);
    return oru::append_item(*nvlist, make_item(name, value));
}

int32_t oru_do_nvlist_add_l(ORUDoNvlist *nvlist, const char *name, int32_t len, ORUDoValue *value) {
    ORU_REQUIRE(nvlist);
    return oru::append_item(*nvlist, make_item(name, len, value));
}

int32_t oru_do_nvlist_add_at(ORUDoNvlist *nvlist, const char *name, ORUDoValue *value,
                             int32_t pos) {
    ORU_REQUIRE(nvlist);
    return insert_item(*nvlist, make_item(name, value), pos);
}

int32_t oru_do_nvlist_add_l_at(ORUDoNvlist *nvlist, const char *name, int32_t len,
                               ORUDoValue *value, int32_t pos) {
    ORU_REQUIRE(nvlist);
    return insert_item(*nvlist, make_item(name, len, value), pos);
}

int32_t oru_do_nvlist_add_all(ORUDoNvlist *nvlist, ORUDoNvlist *other_nvlist) {
    ORU_REQUIRE(nvlist);
    ORU_REQUIRE(other_nvlist);
    const bool complete = oru::chain(*other_nvlist).each([nvlist](const ORUDoNvlistItem &item) {
        return oru::append_item(*nvlist, make_item(item.name, item.value)) != -1;
    });
    return complete ? static_cast<int32_t>(nvlist->count) : -1;
}

void oru_do_nvlist_delete_one(ORUDoNvlist *nvlist, const char *name) {
    ORU_REQUIRE(nvlist);
    ORU_REQUIRE(name);
    oru::delete_items(*nvlist, has_name(name), 1);
}

void oru_do_nvlist_delete_all(ORUDoNvlist *nvlist, const char *name) {
    ORU_REQUIRE(nvlist);
    ORU_REQUIRE(name);
    oru::delete_items(*nvlist, has_name(name));
}

ORU_LIST_API(ORUDoNvlist, ORUDoNvlistItem, oru_do_nvlist, nvlist, DO_COLL_NVLIST)
ORU_LIST_READ_API(ORUDoNvlist, oru_do_nvlist, nvlist, DO_COLL_NVLIST)
