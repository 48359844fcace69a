#include "md/type_check.h"

#include <cstring>

#include "do/nvlist.h"
#include "do/value.h"
#include "do/vlist.h"
#include "frame/trace.h"
#include "md/records.h"
#include "oru/constraint.h"
#include "oru/prop_meta.h"
#include "oru/rc.h"

namespace {

using oru::Level;

bool both(int32_t (*in_group)(int32_t), int32_t a, int32_t b) {
    return in_group(a) != 0 && in_group(b) != 0;
}

int32_t code_for(bool fits) {
    return fits ? ORU_OK : ORU_RC_TYPE_COMPATIBILITY;
}

int32_t check_signed(int32_t typecode, ORUDoValue *value) {
    int32_t status = ORU_OK;
    const int64_t n = oru_do_value_to_int64(value, &status);
    return code_for(status != ORU_OK || (n >= oru_do_constraint_get_min_signed_int_num(typecode) &&
                                         n <= oru_do_constraint_get_max_signed_int_num(typecode)));
}

int32_t check_unsigned(int32_t typecode, ORUDoValue *value) {
    int32_t status = ORU_OK;
    const uint64_t n = oru_do_value_to_u_int64(value, &status);
    return code_for(status != ORU_OK || n <= oru_do_constraint_get_max_unsigned_int_num(typecode));
}

// The minimum is the least positive normal number: zero and all negative values of the other
// floating type are refused, and that is meant to be so.
int32_t check_real(int32_t typecode, ORUDoValue *value) {
    int32_t status = ORU_OK;
    const double x = oru_do_value_to_double(value, &status);
    return code_for(status != ORU_OK || (!(x < oru_do_constraint_get_min_float_num(typecode)) &&
                                         !(x > oru_do_constraint_get_max_float_num(typecode))));
}

// Some resources keep their index in another type than they declare.
int32_t mismatch(const ORUMdAttrMeta &attr, int32_t typecode, int32_t value_type) {
    const char *name = oru::text_of(attr.name);
    const bool is_index = std::strcmp(name, "entIdx") == 0;
    if (is_index && typecode == ORU_DO_TYPE_INT && value_type == ORU_DO_TYPE_UNSIGNED_INT) {
        ORU_TRACE(Level::detail, "encountered for entidx");
    } else {
        ORU_TRACE(Level::failure, "type %d violates constraint for \"%s\" (expected %d)\n",
                  static_cast<int>(value_type), name, static_cast<int>(typecode));
    }
    return is_index ? ORU_OK : ORU_RC_TYPE_MISMATCH;
}

int32_t check_one(const ORUMdAttrMeta &attr, int32_t typecode, ORUDoValue *value) {
    const int32_t value_type = oru_do_value_get_type(value);
    if (both(oru_do_is_signed_int_num_type, typecode, value_type))
        return check_signed(typecode, value);
    if (both(oru_do_is_unsigned_int_num_type, typecode, value_type))
        return check_unsigned(typecode, value);
    if (both(oru_do_is_float_num_type, typecode, value_type))
        return check_real(typecode, value);
    if (both(oru_do_is_string_type, typecode, value_type))
        return ORU_OK;
    return mismatch(attr, typecode, value_type);
}

int32_t check_elements(const ORUMdAttrMeta &attr, ORUDoValue *value) {
    int32_t status = ORU_OK;
    const ORUDoVlist *elements = oru_do_value_get_array(value, &status);
    if (elements == nullptr)
        return ORU_RC_TYPE_COMPATIBILITY;
    for (auto *item = elements->first; item != nullptr; item = item->next) {
        if (const int32_t code = oru::check_attr_type(attr, item->value); code != ORU_OK)
            return code;
    }
    return ORU_OK;
}

int32_t check_complex(int32_t typecode, ORUMdComplexEl *members, ORUDoValue *value);

// What the member says of its value decides nothing: the structure alone does.
void visit_member(const ORUMdComplexEl &member, ORUDoValue *value) {
    oru_do_constraint_list_eval(member.constraint_list, member.name, value, nullptr);
    if (const auto *type = member.typedef_meta)
        check_complex(type->typecode, type->complex_els, value);
}

bool is_named(const ORUMdComplexEl &member, const char *name) {
    return oru_do_name_equals_w_strname(member.name, name) != 0;
}

int32_t check_choice(ORUMdComplexEl *members, ORUDoValue *value) {
    int32_t code = ORU_OK;
    const ORUDoNvlist *items = oru_do_value_get_choice(value, &code);
    if (items == nullptr) {
        ORU_TRACE(Level::failure, "Failed to extract choice value (rc=%d)\n",
                  static_cast<int>(code));
        return code != ORU_OK ? code : ORU_RC_GENERAL;
    }
    if (items->count != 1)
        return ORU_RC_CHOICE_CONSTRAINT;
    const auto *item = items->first;
    const auto *member = oru::find_record(
        members, [item](const ORUMdComplexEl &each) { return is_named(each, item->name); });
    if (member == nullptr)
        return ORU_RC_CHOICE_CONSTRAINT;
    visit_member(*member, item->value);
    return ORU_OK;
}

int32_t check_sequence(const ORUMdComplexEl *member, ORUDoValue *value) {
    int32_t code = ORU_OK;
    const ORUDoNvlist *items = oru_do_value_get_sequence(value, &code);
    if (items == nullptr) {
        ORU_TRACE(Level::failure, "Failed to extract sequence value (rc=%d)\n",
                  static_cast<int>(code));
        return code != ORU_OK ? code : ORU_RC_GENERAL;
    }
    const auto *item = items->first;
    for (; item != nullptr && member != nullptr; item = item->next, member = member->next) {
        if (!is_named(*member, item->name))
            return ORU_RC_SEQUENCE_CONSTRAINT;
        visit_member(*member, item->value);
    }
    return item == nullptr && member == nullptr ? ORU_OK : ORU_RC_SEQUENCE_CONSTRAINT;
}

int32_t check_complex(int32_t typecode, ORUMdComplexEl *members, ORUDoValue *value) {
    if (typecode == ORU_DO_TYPE_CHOICE)
        return check_choice(members, value);
    return typecode == ORU_DO_TYPE_SEQUENCE ? check_sequence(members, value) : ORU_OK;
}

}  // namespace

int32_t oru::check_attr_type(const ORUMdAttrMeta &attr, ORUDoValue *value) {
    const int32_t typecode = oru_do_prop_meta_get_typecode(attr.prop_meta);
    if (value == nullptr || oru_do_value_is_null(value) != 0)
        return ORU_OK;
    if (typecode == oru_do_value_get_type(value)) {
        const auto *type = attr.typedef_meta;
        const bool has_members = type != nullptr && type->complex_els != nullptr;
        return has_members ? check_complex(typecode, type->complex_els, value) : ORU_OK;
    }
    return oru_do_prop_meta_get_multiplicity(attr.prop_meta) < ORU_MULTIPLICITY_MANY
               ? check_one(attr, typecode, value)
               : check_elements(attr, value);
}
