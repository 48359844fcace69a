#include "json/eval.h"

#include "json/read.h"
#include "oru/error.h"
#include "oru/json.h"
#include "oru/rc.h"
#include "oru/value.h"
#include "oru/vlist.h"

namespace oru::json {
namespace {

// A sign in front makes a reference of a text; doubled it does not.
bool is_reference(const char *text) {
    return (text[0] == '@' || text[0] == '$') && text[1] != text[0];
}

bool gives_value(int64_t type) {
    return (type & (kValue | kExpression)) != 0 || type == kTypeNull;
}

}  // namespace

void Evaluation::fail(int32_t status) const {
    if (errp != nullptr)
        *errp = oru_do_error_new(status != ORU_OK ? status : ORU_RC_MALLOC, function);
}

const char *Evaluation::text_of(ORUDoValue *value) const {
    int32_t status = ORU_OK;
    const char *text = oru_do_value_get_string(value, &status);
    if (status == ORU_OK)
        return text != nullptr ? text : "";
    fail(status);
    return nullptr;
}

bool Evaluation::resolves(ORUDoValue *value) const {
    return resolve_fn != nullptr && value != nullptr && oru_do_value_is_string(value) != 0;
}

ValueRef Evaluation::resolved(ORUDoValue *value, ORUDoValue *default_value) const {
    int32_t status = ORU_OK;
    const char *text = resolves(value) ? oru_do_value_get_string(value, &status) : nullptr;
    if (text == nullptr || !is_reference(text))
        return ValueRef::share(value);
    return ValueRef::adopt(resolve_fn(user, text, default_value));
}

bool is_nothing(ORUDoValue *value) {
    return value == nullptr || oru_do_value_is_null(value) != 0;
}

}  // namespace oru::json

using oru::json::Evaluation;

ORUDoValue *oru_do_json_eval_expr(const char *text, int32_t length,
                                  ORUDoValue *(*resolve_fn)(void *user, const char *text,
                                                            ORUDoValue *default_value),
                                  void (*set_fn)(void *user, const char *text, ORUDoValue *value),
                                  void *user, ORUDoError **errp) {
    ORUDoJsonCtxData *ctx = oru_do_json_parse_allow_expr(text, length, 0, resolve_fn, set_fn, user);
    if (ctx == nullptr)
        return nullptr;
    ORUDoValue *value = nullptr;
    if (oru::json::gives_value(ctx->completed_type))
        value = static_cast<ORUDoValue *>(std::exchange(ctx->completed_obj, nullptr));
    if (errp != nullptr && ctx->err != nullptr)
        *errp = oru_do_error_ref(ctx->err);
    oru_do_json_delete_ctx_data(ctx);
    return value;
}

ORUDoValue *oru_do_json_eval_expr_internal(int64_t code, ORUDoVlist *args,
                                           ORUDoValue *(*resolve_fn)(void *user, const char *text,
                                                                     ORUDoValue *default_value),
                                           void (*set_fn)(void *user, const char *text,
                                                          ORUDoValue *value),
                                           void *user, ORUDoError **errp) {
    using namespace oru::json;
    const auto as = [&](const char *function) {
        return Evaluation{resolve_fn, set_fn, user, errp, function};
    };
    switch (code) {
        case kTypeAdd:
        case kTypeSub:
        case kTypeMult:
        case kTypeDiv:
        case kTypeMod:
            return eval_math(as("eval_math"), code, args);
        case kTypeIncr:
        case kTypeDecr:
            return eval_step(as("eval_incr_decr"), code, args);
        case kTypeMap:
            return eval_map(as("eval_map"), args);
        case kTypeTostring:
            return eval_tostring(as("eval_tostring"), args);
        case kTypeKey:
            return eval_key(as("eval_key"), args);
        case kTypeMin:
        case kTypeMax:
            return eval_extreme(as("eval_min_max"), code, args);
        default:
            return nullptr;
    }
}

// An expression that gives nothing is a null value, so that the one around it goes on.
void *oru_json_expr_deser(ORUDoJsonCtxData *ctx, ORUDoJsonTmpObj *element) {
    using namespace oru::json;
    if (!is_complete(ctx, element, kExpression, kExpression))
        return nullptr;
    const auto args = oru::Ref<ORUDoVlist>::adopt(oru_do_vlist_new());
    bool whole = static_cast<bool>(args);
    for (const Item *item = element->items; whole && item != nullptr; item = item->next) {
        const auto value = ValueRef::adopt(item_to_value(*item));
        whole = value && oru_do_vlist_add(args.get(), value.get()) >= 0;
    }
    if (!whole) {
        fail_memory(ctx);
        return nullptr;
    }
    ORUDoError *error = nullptr;
    ORUDoValue *value = oru_do_json_eval_expr_internal(
        element->type_info->type_code, args.get(), ctx->resolve_fn, ctx->set_fn, ctx->user, &error);
    if (error != nullptr)
        oru_do_error_deref(std::exchange(ctx->err, error));
    if (value != nullptr)
        return value;
    // A function without memory for its result leaves no error.
    value = oru_do_value_new_null();
    if (error == nullptr || value == nullptr)
        fail_memory(ctx);
    return value;
}
