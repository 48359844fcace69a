#include "errors.h"

#include <oru/oru.h>
#include <string.h>

static ORUDoError *get_error(ORUErrorIfc *holder) {
    return ((struct errors *)holder)->held;
}

static void hold(struct errors *errors, ORUDoError *error) {
    oru_do_error_ref(error);
    oru_do_error_deref(errors->held);
    errors->held = error;
}

static void set_do_error(ORUErrorIfc *holder, ORUDoError *error) {
    hold((struct errors *)holder, error);
}

static void set_error(ORUErrorIfc *holder, int32_t code, const char *text) {
    ORUDoError *error = oru_do_error_new(code, text);
    hold((struct errors *)holder, error);
    oru_do_error_deref(error);
}

static void ignore_warning(ORUErrorIfc *holder, int32_t code, const char *text) {
    (void)holder;
    (void)code;
    (void)text;
}

static void reset_errors(ORUErrorIfc *holder) {
    hold((struct errors *)holder, NULL);
}

void errors_init(struct errors *errors) {
    memset(errors, 0, sizeof *errors);
    errors->table.get_error = get_error;
    errors->table.set_error = set_error;
    errors->table.set_do_error = set_do_error;
    errors->table.add_warning = ignore_warning;
    errors->table.reset_errors = reset_errors;
}

void errors_free(struct errors *errors) {
    reset_errors(&errors->table);
}

int32_t errors_fail(struct errors *errors, int32_t code, const char *format, ...) {
    va_list args;
    va_start(args, format);
    ORUDoError *error = oru_do_error_new_va(code, format, args);
    va_end(args);
    hold(errors, error);
    oru_do_error_deref(error);
    return code;
}
