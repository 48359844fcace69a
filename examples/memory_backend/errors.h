/* The error holder that a session and each cursor have. */
#ifndef ERRORS_H
#define ERRORS_H

#include <oru/pr.h>

struct errors {
    ORUErrorIfc table; /* first: callers see the table alone */
    ORUDoError *held;
};

void errors_init(struct errors *errors);
void errors_free(struct errors *errors);

/* Holds a new error, printf style, and gives its code. */
int32_t errors_fail(struct errors *errors, int32_t code, const char *format, ...) ORU_PRINTF(3, 4);

#endif
