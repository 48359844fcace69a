// Descriptions. Keys differ in part from those that are written.
#include "do/name.h"
#include "do/ntlist.h"
#include "frame/text.h"
#include "json/read.h"
#include "md/constraint.h"
#include "md/mr_meta.h"
#include "md/prop_meta.h"
#include "md/typedef_meta.h"
#include "oru/ntlist.h"
#include "oru/value.h"

namespace oru::json {
namespace {

Ref<ORUDoName> name_of(const Item &item) {
    return Ref<ORUDoName>::adopt(oru_do_name_new_l(item.scalar.text, item.scalar_len));
}

Text copy_of(const Item &item) {
    return Text(duplicate(item.scalar.text, static_cast<size_t>(item.scalar_len), Tag::json));
}

int32_t number_at(const Element &element, const char *key, int32_t otherwise,
                  const char *sooner = nullptr) {
    const Item *item = find_item(element, key, kInteger, sooner);
    return item != nullptr ? static_cast<int32_t>(item->scalar.integer) : otherwise;
}

template <class Object>
Object *object_at(const Element &element, const char *key, int64_t type) {
    const Item *item = find_item(element, key, type);
    return item != nullptr ? static_cast<Object *>(item->obj) : nullptr;
}

// A list of the completed objects of one type.
template <class List, class Object>
void *list_deser(ORUDoJsonCtxData *ctx, const Element *element, int64_t type, int64_t item_type,
                 List *(*make_list)(), int32_t (*add)(List *, Object *)) {
    if (!is_complete(ctx, element, kExactly, type))
        return nullptr;
    auto list = Ref<List>::adopt(make_list());
    for (const Item *item = element->items; list && item != nullptr; item = item->next) {
        if (item->type == item_type && add(list.get(), static_cast<Object *>(item->obj)) < 0)
            fail_memory(ctx);
    }
    return finished(ctx, std::move(list));
}

Ref<ORUDoTypedefMeta> simple_type(const Element &element, ORUDoName *name, const Item &type) {
    const Text text = copy_of(type);
    if (!text)
        return {};
    auto *constraints =
        object_at<ORUDoConstraintList>(element, "constraint_list", kTypeConstraintList);
    auto meta = Ref<ORUDoTypedefMeta>::adopt(oru_do_typedef_meta_new_simpletype(
        name, oru_do_get_typecode_by_typestr(text.get()), constraints));
    if (meta && meta->simple == nullptr)
        return {};  // memory ran out for all that it tells
    return meta;
}

}  // namespace

void *ntlist_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeNtlist))
        return nullptr;
    auto list = Ref<ORUDoNtlist>::adopt(oru_do_ntlist_new());
    for (const Item *item = element->items; list && item != nullptr; item = item->next) {
        if (item->key == nullptr || item->type != kTypeTypedefMeta)
            continue;
        const auto name = Ref<ORUDoName>::adopt(oru_do_name_new_l(item->key, item->key_len));
        auto *meta = static_cast<ORUDoTypedefMeta *>(item->obj);
        if (!name || oru_do_ntlist_add_typedef_meta(list.get(), name.get(), meta) < 0)
            fail_memory(ctx);
    }
    return finished(ctx, std::move(list));
}

// The first of its parts that is there makes the kind; without one there is no description.
void *typedef_meta_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeTypedefMeta))
        return nullptr;
    const Item *type = find_item(*element, "simple_type", kText);
    auto *enums = object_at<ORUDoNvlist>(*element, "enum", kTypeNvlist);
    auto *sequence = object_at<ORUDoNtlist>(*element, "sequence", kTypeNtlist);
    auto *choice = object_at<ORUDoNtlist>(*element, "choice", kTypeNtlist);
    if (type == nullptr && enums == nullptr && sequence == nullptr && choice == nullptr)
        return nullptr;
    const Item *name_item = find_item(*element, "name", kText);
    const auto name =
        name_item != nullptr ? name_of(*name_item) : Ref<ORUDoName>::adopt(oru_do_name_new(""));
    Ref<ORUDoTypedefMeta> meta;
    if (name) {
        if (type != nullptr) {
            meta = simple_type(*element, name.get(), *type);
        } else if (enums != nullptr) {
            meta = Ref<ORUDoTypedefMeta>::adopt(oru_do_typedef_meta_new_enum(name.get(), enums));
        } else if (sequence != nullptr) {
            meta = Ref<ORUDoTypedefMeta>::adopt(
                oru_do_typedef_meta_new_sequence(name.get(), sequence));
        } else {
            meta = Ref<ORUDoTypedefMeta>::adopt(oru_do_typedef_meta_new_choice(name.get(), choice));
        }
    }
    return finished(ctx, std::move(meta));
}

void *constraint_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeConstraint))
        return nullptr;
    const Item *text_item = find_item(*element, "constraint_str", kText, "condition");
    if (text_item == nullptr)
        return nullptr;
    const Item *condition_item = find_item(*element, "condition", kText);
    const auto condition = Ref<ORUDoCondition>::adopt(
        condition_item != nullptr
            ? oru_do_condition_new_l(condition_item->scalar.text, condition_item->scalar_len)
            : nullptr);
    const bool whole = condition_item == nullptr || condition;
    return finished(
        ctx, Ref<ORUDoConstraint>::adopt(whole ? oru_do_constraint_new_l(condition.get(),
                                                                         text_item->scalar.text,
                                                                         text_item->scalar_len)
                                               : nullptr));
}

void *constraint_list_deser(ORUDoJsonCtxData *ctx, Element *element) {
    return list_deser(ctx, element, kTypeConstraintList, kTypeConstraint,
                      oru_do_constraint_list_new, oru_do_constraint_list_add);
}

void *prop_meta_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypePropMeta))
        return nullptr;
    const Item *name_item = find_item(*element, "prop_name", kText);
    const Item *type_item = find_item(*element, "type_name", kText);
    const int32_t typecode = number_at(*element, "type_code", ORU_DO_TYPE_UNKNOWN);
    if (name_item == nullptr || type_item == nullptr || typecode == ORU_DO_TYPE_UNKNOWN)
        return nullptr;
    const auto name = name_of(*name_item);
    const auto type = name_of(*type_item);
    ORUDoPropMeta *meta = nullptr;
    if (name && type) {
        meta = oru_do_prop_meta_new(
            name.get(), number_at(*element, "category", -1), number_at(*element, "primary_key", 0),
            number_at(*element, "key_idx", 0), nullptr, typecode, type.get(),
            number_at(*element, "multiplicity", 1),
            number_at(*element, "targetRole", 0, "type_code"),
            static_cast<uint8_t>(number_at(*element, "max_access", 0, "multiplicity")), 0);
    }
    return finished(ctx, Ref<ORUDoPropMeta>::adopt(meta));
}

void *prop_meta_list_deser(ORUDoJsonCtxData *ctx, Element *element) {
    return list_deser(ctx, element, kTypePropMetaList, kTypePropMeta, oru_do_prop_meta_list_new,
                      oru_do_prop_meta_list_add);
}

// The list of properties is not taken.
void *mr_meta_deser(ORUDoJsonCtxData *ctx, Element *element) {
    if (!is_complete(ctx, element, kExactly, kTypeMrMeta))
        return nullptr;
    const Item *pkg_item = find_item(*element, "pkg_name", kText);
    const Item *name_item = find_item(*element, "mr_name", kText);
    if (pkg_item == nullptr || name_item == nullptr)
        return nullptr;
    const Item *version_item = find_item(*element, "pkg_version", kText, "pkg_name");
    const Text version = version_item != nullptr ? copy_of(*version_item) : Text();
    const auto pkg = name_of(*pkg_item);
    const auto name = name_of(*name_item);
    ORUDoMrMeta *meta = nullptr;
    if (pkg && name && (version_item == nullptr || version)) {
        meta = oru_do_mr_meta_new(pkg.get(), version.get(), name.get(),
                                  static_cast<uint8_t>(number_at(*element, "max_access", 0)),
                                  nullptr, nullptr);
    }
    return finished(ctx, Ref<ORUDoMrMeta>::adopt(meta));
}

void *mr_meta_list_deser(ORUDoJsonCtxData *ctx, Element *element) {
    return list_deser(ctx, element, kTypeMrMetaList, kTypeMrMeta, oru_do_mr_meta_list_new,
                      oru_do_mr_meta_list_add);
}

}  // namespace oru::json
