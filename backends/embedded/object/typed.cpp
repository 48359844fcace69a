#include "typed.h"

#include <cmath>
#include <limits>

namespace embedded {

namespace {

/* A list with what `change` makes of each element. */
template <typename Change>
ValueList map_list(ORUDoVlist *elements, Change change) {
    ValueList changed = made<ValueList>(oru_do_vlist_new());
    EachValue each(elements);
    while (ORUDoValue *element = each()) {
        if (oru_do_vlist_add(changed.get(), change(element).get()) < 0)
            throw std::bad_alloc();
    }
    return changed;
}

/* The members with what `change` makes of each. */
template <typename Change>
NameValueList map_members(ORUDoNvlist *members, Change change) {
    NameValueList changed = made<NameValueList>(oru_do_nvlist_new());
    EachItem each(members);
    while (ORUDoNvlistItem *item = each()) {
        const char *const name = oru_do_nvlist_item_get_name(item);
        const Value value = change(name, oru_do_nvlist_item_get_value(item));
        if (oru_do_nvlist_add(changed.get(), name, value.get()) < 1)
            throw std::bad_alloc();
    }
    return changed;
}

ORUDoNvlist *members_of(ORUDoValue *value) {
    int32_t status = 0;
    return oru_do_value_get_type(value) == ORU_DO_TYPE_CHOICE
               ? oru_do_value_get_choice(value, &status)
               : oru_do_value_get_sequence(value, &status);
}

Value of_members(int32_t type, const NameValueList &members) {
    return made_value(type == ORU_DO_TYPE_CHOICE ? oru_do_value_new_choice(members.get())
                                                 : oru_do_value_new_sequence(members.get()));
}

bool is_composed(ORUDoValue *value) {
    const int32_t type = oru_do_value_get_type(value);
    return type == ORU_DO_TYPE_CHOICE || type == ORU_DO_TYPE_SEQUENCE || type == ORU_DO_TYPE_ARRAY;
}

/* Names a value that is nobody else's. */
Value named(Value made_here, std::string_view type_name) {
    if (!type_name.empty())
        set_type_name(made_here, type_name);
    return made_here;
}

/* A value with the name of a derived type. One that is shared is copied; copies of composed values
   lose the names inside, but these were made anew when they fit their type. */
Value with_name(const Value &value, ORUDoValue *given, std::string_view type_name) {
    if (view(oru_do_value_get_typedef_name(value.get())) == type_name)
        return value;
    if (value.get() != given)
        return named(value, type_name);
    if (is_composed(given))
        return value;
    const Value copy = made_value(oru_do_value_clone(given));
    oru_do_value_set_flags(copy.get(), 0);
    return named(copy, type_name);
}

/* ---- Into a type ---- */

bool is_whole_type(int32_t type) {
    return (type >= ORU_DO_TYPE_UNSIGNED_BYTE && type <= ORU_DO_TYPE_LONG) ||
           type == ORU_DO_TYPE_DATETIME || type == ORU_DO_TYPE_DURATION;
}

std::string number_text(ORUDoValue *value) {
    int32_t status = 0;
    if (oru_do_value_is_unsigned_int_number(value) != 0)
        return std::to_string(oru_do_value_to_u_int64(value, &status));
    return std::to_string(oru_do_value_to_int64(value, &status));
}

/* A number in another width, when it fits. */
Value number_in_type(int32_t type, ORUDoValue *value) {
    const std::string text = number_text(value);
    const Value number = value_from_text(text, type);
    return number && number_text(number.get()) == text ? number : Value::share(value);
}

/* A floating number in the other width; the library tells of those that are beyond it. */
Value real_in_type(int32_t type, ORUDoValue *value) {
    int32_t status = 0;
    const double number = oru_do_value_to_double(value, &status);
    if (type == ORU_DO_TYPE_DOUBLE)
        return made<Value>(oru_do_value_new_double(number));
    if (std::isfinite(number) && std::abs(number) > std::numeric_limits<float>::max())
        return Value::share(value);
    return made<Value>(oru_do_value_new_float(static_cast<float>(number)));
}

Value text_in_type(int32_t type, const std::string &text) {
    if (type == ORU_DO_TYPE_STRING)
        return made_value(oru_do_value_new_string(text.c_str()));
    if (type == ORU_DO_TYPE_ENUMERATION)
        return made_value(oru_do_value_new_enumeration(text.c_str()));
    const Uri uri = made<Uri>(oru_do_uri_new(text.c_str()));
    return made<Value>(type == ORU_DO_TYPE_MR_URI ? oru_do_value_new_mr_uri(uri.get())
                                                  : oru_do_value_new_coll_uri(uri.get()));
}

std::string text_of(ORUDoValue *value) {
    int32_t status = 0;
    switch (oru_do_value_get_type(value)) {
        case ORU_DO_TYPE_STRING:
            return std::string(view(oru_do_value_get_string(value, &status)));
        case ORU_DO_TYPE_ENUMERATION:
            return std::string(view(oru_do_value_get_enumeration(value, &status)));
        default:
            return std::string(view(oru_do_uri_get_uri_str(oru_do_value_get_uri(value))));
    }
}

bool both(bool (*in_group)(int32_t), int32_t a, int32_t b) {
    return in_group(a) && in_group(b);
}

/* The library lets values pass for each other that are whole numbers, floating ones, or texts. What
   is kept is of the type of its attribute all the same: comparisons tell them apart. */
Value scalar_in_type(int32_t type, ORUDoValue *value) {
    const int32_t given = oru_do_value_get_type(value);
    if (given == type)
        return Value::share(value);
    if (both(is_whole_type, type, given))
        return number_in_type(type, value);
    if (both([](int32_t each) { return oru_do_is_float_num_type(each) != 0; }, type, given))
        return real_in_type(type, value);
    if (both([](int32_t each) { return oru_do_is_string_type(each) != 0; }, type, given))
        return text_in_type(type, text_of(value));
    return Value::share(value);
}

Value in_type(int32_t code, const ValueType *type, ORUDoValue *value);

Value complex_in_type(const ValueType &type, ORUDoValue *value) {
    if (oru_do_value_get_type(value) != type.code)
        return Value::share(value);
    return of_members(type.code,
                      map_members(members_of(value), [&](const char *name, ORUDoValue *given) {
                          const ValueType::Member *const member = type.find(view(name));
                          return member != nullptr ? in_type(member->code, member->type, given)
                                                   : Value::share(given);
                      }));
}

Value in_type(int32_t code, const ValueType *type, ORUDoValue *value) {
    if (type == nullptr)
        return scalar_in_type(code, value);
    const bool is_complex = type->code == ORU_DO_TYPE_SEQUENCE || type->code == ORU_DO_TYPE_CHOICE;
    const Value converted =
        is_complex ? complex_in_type(*type, value) : scalar_in_type(type->code, value);
    return with_name(converted, value, type->name);
}

}  // namespace

Value in_type_of(const AttributeType &attribute, ORUDoValue *value) {
    const ValueType *const type = attribute.value_type;
    if (!attribute.is_many)
        return in_type(attribute.type, type, value);
    if (oru_do_value_is_array(value) == 0)
        return Value::share(value);
    int32_t status = 0;
    const ValueList elements =
        map_list(oru_do_value_get_array(value, &status),
                 [&](ORUDoValue *element) { return in_type(attribute.type, type, element); });
    // the wire form keeps the name of the elements' type with the array
    return named(made_value(oru_do_value_new_array(elements.get())), attribute.type_name);
}

namespace {

Value replace_inner(ORUDoValue *value, const ReplaceSecret &replace) {
    return replace_secrets(Value::share(value), replace);
}

}  // namespace

Value replace_secrets(const Value &value, const ReplaceSecret &replace) {
    int32_t status = 0;
    const int32_t type = oru_do_value_get_type(value.get());
    const std::string_view type_name = view(oru_do_value_get_typedef_name(value.get()));
    if (type == ORU_DO_TYPE_STRING) {
        const Secrecy secrecy = secrecy_of(type_name);
        return secrecy == Secrecy::none ? value : named(replace(value.get(), secrecy), type_name);
    }
    if (!is_composed(value.get()))
        return value;
    if (type == ORU_DO_TYPE_ARRAY) {
        const ValueList elements =
            map_list(oru_do_value_get_array(value.get(), &status),
                     [&](ORUDoValue *element) { return replace_inner(element, replace); });
        return named(made_value(oru_do_value_new_array(elements.get())), type_name);
    }
    const NameValueList members = map_members(
        members_of(value.get()),
        [&](const char *, ORUDoValue *member) { return replace_inner(member, replace); });
    return named(of_members(type, members), type_name);
}

}  // namespace embedded
