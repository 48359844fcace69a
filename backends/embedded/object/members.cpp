#include "members.h"

namespace embedded {

namespace {

bool is_null(ORUDoValue *value) {
    return value == nullptr || oru_do_value_is_null(value) != 0;
}

bool both(int32_t (*is_one)(int32_t), int32_t a, int32_t b) {
    return is_one(a) != 0 && is_one(b) != 0;
}

/* Whole numbers came into the width of their type when they fit it. */
bool fits_type(int32_t wanted, int32_t given) {
    return wanted == given || wanted == ORU_DO_TYPE_UNKNOWN ||
           both(oru_do_is_string_type, wanted, given) ||
           both(oru_do_is_float_num_type, wanted, given);
}

std::string constraint_in(ORUDoConstraintList *list, ORUDoName *name) {
    ORUDoConstraint *const constraint = oru_do_constraint_list_appl_constraint(list, name, nullptr);
    return constraint != nullptr ? std::string(view(oru_do_constraint_get_str(constraint)))
                                 : std::string();
}

ORUDoNvlist *items_of(ORUDoValue *value) {
    int32_t status = 0;
    return oru_do_value_get_type(value) == ORU_DO_TYPE_CHOICE
               ? oru_do_value_get_choice(value, &status)
               : oru_do_value_get_sequence(value, &status);
}

std::string_view name_of(const ValueType::Member &member) {
    return view(oru_do_name_get_strname(member.name.get()));
}

std::string names_of(const ValueType &type) {
    std::string names;
    for (const ValueType::Member &member : type.members)
        names += (names.empty() ? "" : ", ") + std::string(name_of(member));
    return names;
}

/* Walks a value beside its type. A path is that of the value at hand: ".route.hops", "[1].route",
   empty at the top. */
class InnerChecker {
  public:
    explicit InnerChecker(const std::function<void(const InnerFault &)> &tell) : tell_(tell) {}

    void check_elements(const ValueType &type, ORUDoValue *array) {
        int32_t status = 0;
        size_t index = 0;
        EachValue each(oru_do_value_get_array(array, &status));
        while (ORUDoValue *element = each()) {
            const std::string path = "[" + std::to_string(index++) + "]";
            if (type.labels)
                check_label(type, element, path);
            else
                check_members(type, element, path);
        }
    }

    void check_members(const ValueType &type, ORUDoValue *value, const std::string &path) {
        if (type.members.empty() || is_null(value))
            return;
        if (!has_shape(type, value))
            return fault(type.code == ORU_DO_TYPE_CHOICE ? ORU_RC_CHOICE_CONSTRAINT
                                                         : ORU_RC_SEQUENCE_CONSTRAINT,
                         path, "has other members than its type", names_of(type), value);
        EachItem each(items_of(value));
        while (ORUDoNvlistItem *item = each()) {
            const std::string name(view(oru_do_nvlist_item_get_name(item)));
            if (const ValueType::Member *const member = type.find(name))
                check_member(*member, oru_do_nvlist_item_get_value(item), path + "." + name);
        }
    }

  private:
    void fault(int32_t code, std::string path, const std::string &words,
               const std::string &expected, ORUDoValue *got) {
        if (path.starts_with('.'))
            path.erase(0, 1);
        const char *const what = path.ends_with(']') ? "the element " : "the member ";
        tell_({code, what + path + (words.starts_with(':') ? "" : " ") + words, expected, got});
    }

    /* All members in their order, or one of them. */
    static bool has_shape(const ValueType &type, ORUDoValue *value) {
        const bool is_choice = type.code == ORU_DO_TYPE_CHOICE;
        size_t count = 0;
        EachItem each(items_of(value));
        while (ORUDoNvlistItem *item = each()) {
            const std::string_view name = view(oru_do_nvlist_item_get_name(item));
            if (is_choice ? type.find(name) == nullptr
                          : count == type.members.size() || name_of(type.members[count]) != name)
                return false;
            count++;
        }
        return count == (is_choice ? 1 : type.members.size());
    }

    void check_member(const ValueType::Member &member, ORUDoValue *value, const std::string &path) {
        if (is_null(value))
            return;
        const ValueType *const type = member.type;
        if (!fits_type(member.code, oru_do_value_get_type(value)))
            return fault(ORU_RC_TYPE_MISMATCH, path, "does not fit its type",
                         std::string(view(oru_do_get_typestr_by_typecode(member.code))), value);
        if (!is_kept(member.constraints, member, value, path) || type == nullptr ||
            !is_kept(type->constraints, member, value, path))
            return;
        if (type->labels)
            check_label(*type, value, path);
        else
            check_members(*type, value, path);
    }

    /* Conditions have nothing but the value to ask about. */
    bool is_kept(const ConstraintList &list, const ValueType::Member &member, ORUDoValue *value,
                 const std::string &path) {
        const int32_t code = certain(int32_t{ORU_OK}, [&] {
            return oru_do_constraint_list_eval(list.get(), member.name.get(), value, nullptr);
        });
        if (code != ORU_OK)
            fault(code, path, ": " + std::string(view(oru_do_get_err_msg(code))),
                  constraint_in(list.get(), member.name.get()), value);
        return code == ORU_OK;
    }

    void check_label(const ValueType &type, ORUDoValue *value, const std::string &path) {
        int32_t status = 0;
        const char *const label = oru_do_value_get_enumeration(value, &status);
        if (label != nullptr && oru_do_nvlist_get_value(type.labels.get(), label) == nullptr)
            fault(ORU_RC_ENUM_CONSTRAINT, path, "has no such label", labels_in(type.labels.get()),
                  value);
    }

    const std::function<void(const InnerFault &)> &tell_;
};

}  // namespace

std::string labels_in(ORUDoNvlist *enums) {
    std::string labels;
    EachItem each(enums);
    while (ORUDoNvlistItem *label = each())
        labels +=
            (labels.empty() ? "" : ", ") + std::string(view(oru_do_nvlist_item_get_name(label)));
    return labels;
}

void check_inside(const AttributeType &attribute, ORUDoValue *value,
                  const std::function<void(const InnerFault &)> &tell) {
    if (attribute.value_type == nullptr)
        return;
    InnerChecker checker(tell);
    if (oru_do_value_is_array(value) != 0)
        checker.check_elements(*attribute.value_type, value);
    else
        checker.check_members(*attribute.value_type, value, {});
}

}  // namespace embedded
