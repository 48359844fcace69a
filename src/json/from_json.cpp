// Reading one object of a known type.
#include <cstring>

#include "frame/text.h"
#include "json/read.h"
#include "oru/error.h"
#include "oru/json.h"

namespace {

using namespace oru::json;

bool is_exactly(int64_t type, int64_t expected) {
    return type == expected;
}

bool is_value(int64_t type, int64_t) {
    return type == kTypeNull || (type & kValue) != 0;
}

template <class Object>
Object *read(const char *text, int32_t length, int64_t expected, ORUDoError **errp,
             bool (*accepts)(int64_t, int64_t) = is_exactly) {
    ORUDoJsonCtxData *ctx = oru_do_json_parse(text, length, expected);
    if (ctx == nullptr)
        return nullptr;
    Object *object = nullptr;
    if (ctx->completed_obj != nullptr && accepts(ctx->completed_type, expected)) {
        object = static_cast<Object *>(std::exchange(ctx->completed_obj, nullptr));
    } else if (errp != nullptr && ctx->err != nullptr) {
        *errp = oru_do_error_ref(ctx->err);
    }
    oru_do_json_delete_ctx_data(ctx);
    return object;
}

ORUDoValue *read_value(const char *text, int32_t length, ORUDoError **errp) {
    return read<ORUDoValue>(text, length, kValue, errp, is_value);
}

// A number that ends the text is not seen by the parser; with a blank behind it, it is.
ORUDoValue *read_number(const char *text, int32_t length, ORUDoError **errp) {
    constexpr size_t kUsualSize = 512;
    char usual[kUsualSize];
    oru::Text longer;
    char *copy = usual;
    const auto size = static_cast<size_t>(length);
    if (size + 2 >= kUsualSize) {
        longer.reset(static_cast<char *>(ph_malloc_named(tag_word(oru::Tag::json), size + 2)));
        copy = longer.get();
    }
    if (copy == nullptr) {
        if (errp != nullptr)
            *errp = oru_do_error_new(ORU_JSON_ERR_MEMORY, "");
        return nullptr;
    }
    std::memcpy(copy, text, size);
    copy[size] = ' ';
    copy[size + 1] = '\0';
    return read_value(copy, length + 1, errp);
}

}  // namespace

ORUDoValue *oru_do_value_from_json(const char *text, int32_t length, ORUDoError **errp) {
    const bool ends_with_digit =
        text != nullptr && length > 0 && text[length - 1] >= '0' && text[length - 1] <= '9';
    return ends_with_digit && length < INT32_MAX - 2 ? read_number(text, length, errp)
                                                     : read_value(text, length, errp);
}

#define FROM_JSON(Object, name, code)                                                        \
    Object *oru_do_##name##_from_json(const char *text, int32_t length, ORUDoError **errp) { \
        return read<Object>(text, length, code, errp);                                       \
    }

FROM_JSON(ORUDoProperties, properties, kTypeProperties)
FROM_JSON(ORUDoPropertiesList, properties_list, kTypePropertiesList)
FROM_JSON(ORUDoNlist, nlist, kTypeNlist)
FROM_JSON(ORUDoNvlist, nvlist, kTypeNvlist)
FROM_JSON(ORUDoVlist, vlist, kTypeVlist)
FROM_JSON(ORUDoVtable, vtable, kTypeVtable)
FROM_JSON(ORUDoError, error, kTypeError)
FROM_JSON(ORUDoPropErrs, prop_errs, kTypePropErrs)
FROM_JSON(ORUDoDtree, dtree, kTypeDtree)
FROM_JSON(ORUDoNtlist, ntlist, kTypeNtlist)
FROM_JSON(ORUDoTypedefMeta, typedef_meta, kTypeTypedefMeta)
FROM_JSON(ORUDoConstraint, constraint, kTypeConstraint)
FROM_JSON(ORUDoConstraintList, constraint_list, kTypeConstraintList)
FROM_JSON(ORUDoPropMeta, prop_meta, kTypePropMeta)
FROM_JSON(ORUDoPropMetaList, prop_meta_list, kTypePropMetaList)
FROM_JSON(ORUDoMrMeta, mr_meta, kTypeMrMeta)
FROM_JSON(ORUDoMrMetaList, mr_meta_list, kTypeMrMetaList)
FROM_JSON(ORUDoConfigOps, config_ops, kTypeConfigOps)
FROM_JSON(ORUDoEvent, event, kTypeEvent)

#undef FROM_JSON
