// What a request leaves with the error holder of its handler.
#include <cstdarg>
#include <cstdio>

#include "frame/text.h"
#include "oru/error.h"
#include "oru/lib.h"
#include "oru/pr.h"
#include "oru/util.h"
#include "pr/ctx.h"

namespace {

constexpr int32_t kNoHolder = -1;

// What a provider has to say, and the same with where it comes from; both with their zero.
constexpr size_t kTextSize = 256;
constexpr size_t kWholeTextSize = 319;

ORUErrorIfc *holder_of(ORUPrCtx *ctx) {
    ORUPrCrudxHandler *crudx = oru_pr_orucore_ctx_get_crudx_handler(ctx);
    return crudx != nullptr && crudx->get_ifc != nullptr ? crudx->get_ifc(crudx) : nullptr;
}

bool compose(char (&text)[kTextSize], const char *format, va_list args) {
    return format != nullptr && std::vsnprintf(text, sizeof text, format, args) >= 0;
}

// Kept for the life of the process, as far as it can be had.
const char *process_name() {
    if (procName == nullptr) {
        char *copy = nullptr;
        oru_get_process_name(&copy);
        const oru::Text unused(copy);
    }
    return procName != nullptr ? procName : "";
}

const char *location() {
    const char *text = get_locationid_str();
    return text != nullptr ? text : "";
}

}  // namespace

int32_t oru_pr_orucore_ctx_set_error(ORUPrCtx *ctx, int32_t code, const char *format, ...) {
    ORUErrorIfc *holder = holder_of(ctx);
    if (holder == nullptr)
        return kNoHolder;
    char text[kTextSize];
    va_list args;
    va_start(args, format);
    const bool composed = compose(text, format, args);
    va_end(args);
    if (!composed)
        return code;
    const char *process = process_name();
    char whole[kWholeTextSize];
    std::snprintf(whole, sizeof whole, "%s-%s:%s:%s", "switch", location(), process, text);
    holder->set_error(holder, code, whole);
    return code;
}

int32_t oru_pr_orucore_ctx_add_warning(ORUPrCtx *ctx, int32_t code, const char *format, ...) {
    ORUErrorIfc *holder = holder_of(ctx);
    if (holder == nullptr)
        return kNoHolder;
    char text[kTextSize];
    va_list args;
    va_start(args, format);
    const bool composed = compose(text, format, args);
    va_end(args);
    if (composed)
        holder->add_warning(holder, code, text);
    return code;
}

int32_t oru_pr_orucore_ctx_set_do_error(ORUPrCtx *ctx, ORUDoError *error) {
    ORUErrorIfc *holder = holder_of(ctx);
    if (holder == nullptr)
        return kNoHolder;
    holder->set_do_error(holder, error);
    return oru_do_error_get_code(error);
}

ORUDoError *oru_pr_orucore_ctx_get_error(ORUPrCtx *ctx) {
    ORUErrorIfc *holder = holder_of(ctx);
    return holder != nullptr ? holder->get_error(holder) : nullptr;
}

void oru_pr_orucore_ctx_reset_errors(ORUPrCtx *ctx) {
    if (ORUErrorIfc *holder = holder_of(ctx))
        holder->reset_errors(holder);
}
