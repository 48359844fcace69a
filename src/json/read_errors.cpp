// Errors, and those of properties.
#include <cstring>

#include "do/error.h"
#include "do/prop_errs.h"
#include "frame/hashtable.h"
#include "frame/text.h"
#include "json/read_names.h"

namespace oru::json {
namespace {

// The errors of properties as they are read: an entry is appended unless its name came already. The
// list is walked for that while it is short, and where there is no memory for an index.
class PropErrsReading {
  public:
    PropErrsReading(ORUDoPropErrs &prop_errs, size_t most) : end_(&prop_errs.head) {
        constexpr size_t kShort = 16;
        if (most <= kShort)
            return;
        while (size_ < 2 * most)
            size_ *= 2;
        void *places = ph_calloc_named(tag_word(Tag::json), size_, sizeof(ORUDoPropErr *));
        index_.reset(static_cast<char *>(places));
    }

    // False when memory runs out.
    bool add(Ref<ORUDoName> name, ORUDoError *error, ORUDoPropErr *first) {
        ORUDoPropErr **place = index_ ? place_of(name->str) : nullptr;
        if (place != nullptr ? *place != nullptr : is_listed(first, name->str))
            return true;  // the first occurrence wins
        auto *entry = oru::make_element<ORUDoPropErr>(name.get());
        if (entry == nullptr)
            return false;
        (void)name.release();
        entry->err = ref(error);
        *end_ = entry;
        end_ = &entry->next;
        if (place != nullptr)
            *place = entry;
        return true;
    }

  private:
    // Where the name stands in the index, or is to stand.
    ORUDoPropErr **place_of(const char *name) {
        auto **places = reinterpret_cast<ORUDoPropErr **>(index_.get());
        size_t at = hash_text(name) & (size_ - 1);
        while (places[at] != nullptr && std::strcmp(places[at]->name->str, name) != 0)
            at = (at + 1) & (size_ - 1);
        return &places[at];
    }

    static bool is_listed(const ORUDoPropErr *entry, const char *name) {
        while (entry != nullptr && std::strcmp(entry->name->str, name) != 0)
            entry = entry->next;
        return entry != nullptr;
    }

    ORUDoPropErr **end_;
    size_t size_ = 1;
    Text index_;
};

bool is_prop_err(const Item &item) {
    return item.key != nullptr && item.type == kTypeError;
}

size_t count_prop_errs(const Element &element) {
    size_t count = 0;
    for (const Item *item = element.items; item != nullptr; item = item->next)
        count += is_prop_err(*item) ? 1 : 0;
    return count;
}

}  // namespace

void *error_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeError))
        return nullptr;
    const Item *msg = find_item(*element, "msg", kText);
    if (msg == nullptr)
        return nullptr;
    const Item *code = find_item(*element, "code", kInteger);
    auto error = Ref<ORUDoError>::adopt(
        oru_do_error_new_l(code != nullptr ? static_cast<int32_t>(code->scalar.integer) : 0,
                           msg->scalar.text, msg->scalar_len));
    if (error) {
        const Item *label = find_item(*element, "namespace", kText);
        if (label != nullptr)
            oru_do_error_set_namespace_l(error.get(), label->scalar.text, label->scalar_len);
        if (error->msg == nullptr || (label != nullptr && error->name_space == nullptr))
            fail_memory(ctx);
        if (const Item *item = find_item(*element, "cause", kTypeError))
            oru_do_error_set_cause(error.get(), static_cast<ORUDoError *>(item->obj));
        if (const Item *item = find_item(*element, "prop_errs", kTypePropErrs))
            oru_do_error_set_prop_errs(error.get(), static_cast<ORUDoPropErrs *>(item->obj));
    }
    return finished(ctx, std::move(error));
}

void *prop_errs_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypePropErrs))
        return nullptr;
    auto prop_errs = Ref<ORUDoPropErrs>::adopt(oru_do_prop_errs_new());
    if (!prop_errs)
        return finished(ctx, std::move(prop_errs));
    PropErrsReading reading(*prop_errs, count_prop_errs(*element));
    for (const Item *item = element->items; item != nullptr; item = item->next) {
        if (!is_prop_err(*item))
            continue;
        auto name = read_name(ctx, item->key, item->key_len);
        if (!name ||
            !reading.add(std::move(name), static_cast<ORUDoError *>(item->obj), prop_errs->head))
            fail_memory(ctx);
    }
    return finished(ctx, std::move(prop_errs));
}

}  // namespace oru::json
