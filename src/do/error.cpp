#include "do/error.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "do/print.h"
#include "frame/text.h"
#include "oru/strbuf.h"

namespace {

constexpr size_t kFormattedSize = 256;

// A copy of a counted text; null without one, and for a length that is none.
char *copy_counted(const char *text, int32_t n) {
    return text != nullptr && n >= 0 ? oru::duplicate(text, static_cast<size_t>(n)) : nullptr;
}

// An error without a message is good enough when the copy cannot be had.
ORUDoError *with_message(ORUDoError *err, const char *msg) {
    if (err != nullptr && msg != nullptr)
        err->msg = oru::duplicate(msg);
    return err;
}

ORUDoError *make_error(int32_t code) {
    auto *err = oru::make<ORUDoError>();
    if (err != nullptr)
        err->code = code;
    return err;
}

void replace_owned(char *&held, char *text) {
    oru::Text old(std::exchange(held, text));
}

bool same_text(const char *a, const char *b) {
    if (a == nullptr || b == nullptr)
        return a == b;
    return std::strcmp(a, b) == 0;
}

// The end of the links behind `cause` that nobody else holds, as far as the stack is trusted.
ORUDoError *last_to_recurse(ORUDoError *cause) {
    constexpr int kDepth = 200;
    for (int i = 0; i < kDepth && cause->cause != nullptr; ++i) {
        if (std::atomic_ref(cause->ref).load(std::memory_order_acquire) != 1)
            break;
        cause = cause->cause;
    }
    return cause;
}

// A cause goes with all behind it before the rest of its owner. Chains of all that is wrong with a
// large change are longer than the stack is deep, so that they go piece by piece.
void release_causes(ORUDoError *cause) {
    while (cause != nullptr) {
        ORUDoError *last = last_to_recurse(cause);
        const bool is_held = std::atomic_ref(last->ref).load(std::memory_order_acquire) != 1;
        ORUDoError *rest = is_held ? nullptr : std::exchange(last->cause, nullptr);
        oru_do_error_deref(cause);
        cause = rest;
    }
}

}  // namespace

void oru::ObjectType<ORUDoError>::release_members(ORUDoError &self) {
    replace_owned(self.msg, nullptr);
    replace_owned(self.name_space, nullptr);
    release_causes(std::exchange(self.cause, nullptr));
    oru_do_prop_errs_deref(self.prop_errs);
}

ORUDoError *oru_do_error_new(int32_t code, const char *msg) {
    return with_message(make_error(code), msg);
}

ORUDoError *oru_do_error_new_l(int32_t code, const char *msg, int32_t n) {
    ORUDoError *err = make_error(code);
    if (err != nullptr)
        err->msg = copy_counted(msg, n);
    return err;
}

ORUDoError *oru_do_error_new_fmt(int32_t code, const char *format, ...) {
    va_list args;
    va_start(args, format);
    ORUDoError *err = oru_do_error_new_va(code, format, args);
    va_end(args);
    return err;
}

ORUDoError *oru_do_error_new_va(int32_t code, const char *format, va_list args) {
    ORU_REQUIRE(format);
    char text[kFormattedSize];
    const bool formatted = std::vsnprintf(text, sizeof text, format, args) >= 0;
    return oru_do_error_new(code, formatted ? text : format);
}

ORUDoError *oru_do_error_new_syserr() {
    const int code = errno;
    return oru_do_error_new(code, std::strerror(code));
}

ORUDoError *oru_do_error_new_w_cause(int32_t code, const char *msg, ORUDoError *cause) {
    ORUDoError *err = oru_do_error_new(code, msg);
    if (err != nullptr)
        err->cause = oru::ref(cause);
    return err;
}

void oru_do_error_set_code(ORUDoError *err, int32_t code) {
    if (err != nullptr)
        err->code = code;
}

void oru_do_error_set_cause(ORUDoError *err, ORUDoError *cause) {
    ORU_REQUIRE(err);
    if (cause != nullptr)
        oru::replace(err->cause, cause);
}

void oru_do_error_set_namespace(ORUDoError *err, const char *text) {
    ORU_REQUIRE(err);
    ORU_REQUIRE(text);
    replace_owned(err->name_space, oru::duplicate(text));
}

void oru_do_error_set_namespace_l(ORUDoError *err, const char *text, int32_t n) {
    ORU_REQUIRE(err);
    replace_owned(err->name_space, copy_counted(text, n));
}

void oru_do_error_set_prop_err(ORUDoError *err, ORUDoName *name, ORUDoError *prop_err) {
    ORU_REQUIRE(err);
    if (err->prop_errs == nullptr)
        err->prop_errs = oru_do_prop_errs_new();
    if (err->prop_errs != nullptr)
        oru_do_prop_errs_set_err(err->prop_errs, name, prop_err);
}

void oru_do_error_set_prop_errs(ORUDoError *err, ORUDoPropErrs *prop_errs) {
    ORU_REQUIRE(err);
    oru_do_prop_errs_ref(prop_errs);
    oru_do_prop_errs_deref(std::exchange(err->prop_errs, prop_errs));
}

int32_t oru_do_error_get_code(ORUDoError *err) {
    ORU_REQUIRE(err);
    return err->code;
}

const char *oru_do_error_get_msg(ORUDoError *err) {
    ORU_REQUIRE(err);
    return err->msg;
}

ORUDoError *oru_do_error_get_cause(ORUDoError *err) {
    ORU_REQUIRE(err);
    return err->cause;
}

const char *oru_do_error_get_namespace(ORUDoError *err) {
    ORU_REQUIRE(err);
    return err->name_space;
}

ORUDoPropErrs *oru_do_error_get_prop_errs(ORUDoError *err) {
    ORU_REQUIRE(err);
    return err->prop_errs;
}

int32_t oru_do_error_equals(ORUDoError *error1, ORUDoError *err2) {
    ORU_REQUIRE(error1);
    return err2 != nullptr && error1->code == err2->code && same_text(error1->msg, err2->msg);
}

int32_t oru_do_error_to_strbuf(ORUDoError *err, int32_t tabs, ORUDoStrbuf *strbuf) {
    ORU_REQUIRE(strbuf);
    if (err == nullptr)
        return 0;
    ORU_REQUIRE(err->msg);
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru_do_strbuf_add_string(strbuf, "Error(");
    oru_do_strbuf_add_long(strbuf, err->code);
    oru_do_strbuf_add_string(strbuf, ") : ");
    oru_do_strbuf_add_string(strbuf, err->msg);
    oru_do_strbuf_add_char(strbuf, '\n');
    if (err->cause != nullptr) {
        oru_do_strbuf_add_tab(strbuf, tabs + 1);
        oru_do_strbuf_add_string(strbuf, ",Cause : ");
        oru_do_error_to_strbuf(err->cause, tabs + 1, strbuf);
    }
    if (err->prop_errs != nullptr) {
        oru_do_strbuf_add_tab(strbuf, tabs + 1);
        oru_do_strbuf_add_string(strbuf, ",Property Errs : ");
        oru_do_prop_errs_to_strbuf(err->prop_errs, tabs + 1, strbuf);
    }
    oru_do_strbuf_add_tab(strbuf, tabs);
    return 0;
}

ORU_PRINT_API(error, ORUDoError, error_to_strbuf)

ORU_OBJECT_API(ORUDoError, oru_do_error)
