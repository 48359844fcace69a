#include "md/constraint.h"

#include <algorithm>
#include <cstring>

#include "do/print.h"
#include "do/value.h"
#include "frame/text.h"
#include "oru/name.h"
#include "oru/strbuf.h"
#include "oru/typedef_meta.h"

namespace {

// A where clause whose text cannot be had prints as nothing.
void put_condition(ORUDoCondition *condition, ORUDoStrbuf *strbuf) {
    const char *expr = oru_do_condition_get_expr(condition);
    oru_do_strbuf_add_string(strbuf, "Condition: ");
    oru_do_strbuf_add_string(strbuf, expr != nullptr ? expr : "");
    oru_do_strbuf_add_char(strbuf, '\n');
}

// Printing hands on an indent, which these texts do not have.
void constraint_text(ORUDoConstraint *constraint, int32_t, ORUDoStrbuf *strbuf) {
    oru_do_constraint_to_strbuf(constraint, strbuf);
}

// Everything that comes from reading the text.
void release_parts(ORUDoConstraint &constraint) {
    oru_do_range_deref(std::exchange(constraint.size, nullptr));
    oru_do_range_deref(std::exchange(constraint.values, nullptr));
    oru_do_range_deref(std::exchange(constraint.strlen, nullptr));
    oru::replace_text(constraint.regex_str, nullptr);
    oru::free_regex(constraint.regex);
    constraint.ordered_by_user = 0;
    constraint.unique = 0;
    oru_do_value_deref(std::exchange(constraint.default_value, nullptr));
}

int32_t type_of(ORUDoTypedefMeta *meta) {
    switch (oru_do_typedef_meta_get_category(meta)) {
        case ORU_TYPEDEF_SIMPLE:
            return oru_do_typedef_meta_get_simple_type(meta);
        case ORU_TYPEDEF_ENUM:
            return ORU_DO_TYPE_ENUMERATION;
        case ORU_TYPEDEF_SEQUENCE:
            return ORU_DO_TYPE_SEQUENCE;
        default:
            return ORU_DO_TYPE_CHOICE;
    }
}

// A built-in type has the empty name, which is none.
void stamp(ORUDoValue *value, ORUDoTypedefMeta *meta) {
    ORUDoName *name = oru_do_typedef_meta_get_name(meta);
    const char *text = name != nullptr ? oru_do_name_get_strname(name) : "";
    if (value != nullptr && *text != '\0')
        oru_do_value_set_typedef_name(value, text);
}

}  // namespace

void oru::ObjectType<ORUDoConstraint>::release_members(ORUDoConstraint &self) {
    replace_text(self.constraint_str, nullptr);
    oru_do_condition_deref(self.condition);
    release_parts(self);
}

ORUDoConstraint *oru_do_constraint_new(ORUDoCondition *condition, const char *str) {
    return oru_do_constraint_new_t(condition, str, ORU_DO_TYPE_UNKNOWN, nullptr);
}

ORUDoConstraint *oru_do_constraint_new_l(ORUDoCondition *condition, const char *str,
                                         int32_t length) {
    return oru_do_constraint_new_l_t(condition, str, length, ORU_DO_TYPE_UNKNOWN, nullptr);
}

ORUDoConstraint *oru_do_constraint_new_t(ORUDoCondition *condition, const char *str,
                                         int32_t typecode, ORUDoEnumResolver resolver) {
    ORU_REQUIRE(str);
    return oru_do_constraint_new_l_t(condition, str, static_cast<int32_t>(std::strlen(str)),
                                     typecode, resolver);
}

ORUDoConstraint *oru_do_constraint_new_l_t(ORUDoCondition *condition, const char *str,
                                           int32_t length, int32_t typecode,
                                           ORUDoEnumResolver resolver) {
    ORU_REQUIRE(str);
    const size_t size = length > 0 ? strnlen(str, static_cast<size_t>(length)) : 0;
    auto constraint = oru::make_ref<ORUDoConstraint>();
    if (!constraint)
        return nullptr;
    char *text = oru::duplicate(str, size);
    if (text == nullptr)
        return nullptr;
    *std::remove(text, text + std::strlen(text), ' ') = '\0';
    constraint->constraint_str = text;
    constraint->condition = oru_do_condition_ref(condition);
    constraint->typecode = ORU_DO_TYPE_UNKNOWN;
    oru::parse_constraint(*constraint, typecode, resolver);
    return constraint.release();
}

void oru_do_constraint_set_typedef_meta(ORUDoConstraint *constraint, ORUDoTypedefMeta *typedef_meta,
                                        ORUDoEnumResolver resolver) {
    ORU_REQUIRE(constraint);
    if (typedef_meta == nullptr)
        return;
    release_parts(*constraint);
    oru::parse_constraint(*constraint, type_of(typedef_meta), resolver);
    stamp(constraint->default_value, typedef_meta);
}

#define ORU_CONSTRAINT_GETTER(Type, suffix, expression)                \
    Type oru_do_constraint_get_##suffix(ORUDoConstraint *constraint) { \
        ORU_REQUIRE(constraint);                                       \
        return constraint->expression;                                 \
    }

ORU_CONSTRAINT_GETTER(const char *, str, constraint_str)
ORU_CONSTRAINT_GETTER(ORUDoCondition *, condition, condition)
ORU_CONSTRAINT_GETTER(ORUDoRange *, size, size)
ORU_CONSTRAINT_GETTER(ORUDoRange *, values, values)
ORU_CONSTRAINT_GETTER(ORUDoRange *, strlen, strlen)
ORU_CONSTRAINT_GETTER(const char *, regex, regex_str)
ORU_CONSTRAINT_GETTER(ORUDoValue *, default_value, default_value)

int32_t oru_do_constraint_get_type(ORUDoConstraint *constraint) {
    ORU_REQUIRE(constraint);
    if (constraint->default_value == nullptr)
        return ORU_CONSTRAINT_NO_DEFAULT;
    return constraint->condition != nullptr ? ORU_CONSTRAINT_CONDITIONAL_DEFAULT
                                            : ORU_CONSTRAINT_DEFAULT;
}

void oru_do_constraint_to_strbuf(ORUDoConstraint *constraint, ORUDoStrbuf *strbuf) {
    if (constraint == nullptr)
        return;
    if (constraint->condition != nullptr)
        put_condition(constraint->condition, strbuf);
    oru_do_strbuf_add_string(strbuf, "Constraint: ");
    oru_do_strbuf_add_string(strbuf, constraint->constraint_str);
    oru_do_strbuf_add_char(strbuf, '\n');
}

int32_t oru_do_print_constraint(FILE *stream, int32_t tabs, ORUDoConstraint *constraint) {
    return oru::print_object<constraint_text>(stream, tabs, constraint);
}

ORU_OBJECT_API(ORUDoConstraint, oru_do_constraint)
