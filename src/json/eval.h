// Expressions: what a function gives for its arguments.
#ifndef ORU_SRC_JSON_EVAL_H
#define ORU_SRC_JSON_EVAL_H

#include "do/value.h"
#include "do/vlist.h"
#include "frame/object.h"
#include "json/types.h"

namespace oru::json {

using ValueRef = Ref<ORUDoValue>;

// One evaluation: the caller's functions, and where the last error goes.
struct Evaluation {
    ORUDoValue *(*resolve_fn)(void *user, const char *text, ORUDoValue *default_value);
    void (*set_fn)(void *user, const char *text, ORUDoValue *value);
    void *user;
    ORUDoError **errp;
    const char *function;  // what errors say

    // Leaves an error of this status, or for 0 of memory that ran out.
    void fail(int32_t status) const;

    // The text of a string argument; null, with an error, when it cannot be had.
    const char *text_of(ORUDoValue *value) const;

    // Whether a function that resolves every string is to resolve this argument.
    bool resolves(ORUDoValue *value) const;

    // The argument, or what stands for it when it is a reference. Null where nothing does.
    ValueRef resolved(ORUDoValue *value, ORUDoValue *default_value) const;

    void set(const char *name, ORUDoValue *value) const {
        if (set_fn != nullptr)
            set_fn(user, name, value);
    }
};

// An integer as its 64 bits, with the mode that tells how to read them.
struct Number {
    uint64_t bits = 0;
    bool is_unsigned = false;

    ORUDoValue *to_value() const;
};

// Whether it is nothing to count with.
bool is_nothing(ORUDoValue *value);

// Reads an unsigned integer or a signed one. The status; 0 for success.
int32_t read_number(ORUDoValue *value, bool is_unsigned, uint64_t &bits);

ORUDoValue *eval_math(const Evaluation &evaluation, int64_t code, ORUDoVlist *args);
ORUDoValue *eval_step(const Evaluation &evaluation, int64_t code, ORUDoVlist *args);
ORUDoValue *eval_extreme(const Evaluation &evaluation, int64_t code, ORUDoVlist *args);
ORUDoValue *eval_map(const Evaluation &evaluation, ORUDoVlist *args);
ORUDoValue *eval_tostring(const Evaluation &evaluation, ORUDoVlist *args);
ORUDoValue *eval_key(const Evaluation &evaluation, ORUDoVlist *args);

}  // namespace oru::json

#endif
