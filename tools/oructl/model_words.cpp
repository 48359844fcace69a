#include "model_words.h"

#include "handles.h"

#include "model.h"

namespace oructl {
namespace {

std::string member_words(const char *kind, ORUMdComplexEl *first) {
    std::vector<std::string> texts;
    for (const ORUMdComplexEl &member : records(first))
        texts.push_back(text_of(member.name) + " " + text_of(member.type_name));
    return std::string(kind) + ": " + joined(texts);
}

}  // namespace

std::string typecode_words(int32_t typecode) {
    const char *text = oru_do_get_typestr_by_typecode(typecode);
    return text != nullptr ? text : "?";
}

std::string enum_words(ORUDoNvlist *labels) {
    std::vector<std::string> texts;
    for (EachItem each(labels); ORUDoNvlistItem *item = each();) {
        int32_t code = 0;
        const int32_t number = oru_do_value_get_int(oru_do_nvlist_item_get_value(item), &code);
        texts.push_back(std::string(oru_do_nvlist_item_get_name(item)) + " = " +
                        std::to_string(number));
    }
    return "enumeration: " + joined(texts);
}

std::string text_of(ORUDoName *name) {
    return name != nullptr ? oru_do_name_get_strname(name) : "";
}

std::string package_name(const ORUMdPkgMeta &package) {
    return text_of(package.name) + ":" + package.version;
}

std::string qualified_name(const ORUMdPkgMeta &package, ORUDoName *name) {
    return package_name(package) + "/" + text_of(name);
}

std::string qualified_name(const ORUMdMrMeta &mr) {
    return qualified_name(*mr.package, mr.name);
}

const char *kind_of(const ORUMdPkgMeta &package) {
    return package.type == ORU_MD_PKG_LIBRARY ? "library" : "implementation";
}

std::string count_of(size_t count, const char *noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string joined(const std::vector<std::string> &texts) {
    std::string all;
    for (const std::string &text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

std::string access_words(uint8_t access) {
    static constexpr struct {
        uint8_t bit;
        const char *word;
    } kBits[] = {{ORU_ACCESS_CREATE, "create"},
                 {ORU_ACCESS_READ, "read"},
                 {ORU_ACCESS_UPDATE, "update"},
                 {ORU_ACCESS_DELETE, "delete"}};
    std::vector<std::string> words;
    for (const auto &[bit, word] : kBits) {
        if ((access & bit) != 0)
            words.push_back(word);
    }
    return words.empty() ? "none" : joined(words);
}

// A built-in type that came with a definition is qualified with the definition's package.
std::string type_words(ORUDoPropMeta *property) {
    std::string words = text_of(oru_do_prop_meta_get_type_name(property));
    const std::string tail = words.substr(words.rfind('/') + 1);
    if (oru_do_get_typecode_by_typestr(tail.c_str()) != ORU_DO_TYPE_UNKNOWN)
        words = tail;
    if (oru_do_prop_meta_get_multiplicity(property) == ORU_MULTIPLICITY_MANY)
        words += "[]";
    return words;
}

std::vector<std::string> constraint_lines(ORUDoConstraintList *list) {
    std::vector<std::string> lines;
    const int32_t count = list != nullptr ? oru_do_constraint_list_get_len(list) : 0;
    for (int32_t i = 0; i < count; ++i) {
        ORUDoConstraint *constraint = oru_do_constraint_list_get_constraint(list, i);
        ORUDoCondition *condition = oru_do_constraint_get_condition(constraint);
        std::string line = oru_do_constraint_get_str(constraint);
        if (condition != nullptr)
            line += std::string("   when ") + oru_do_condition_get_expr(condition);
        lines.push_back(line);
    }
    return lines;
}

std::string definition_words(ORUMdTypedefMeta &type) {
    switch (type.typecode) {
        case ORU_DO_TYPE_ENUMERATION:
            return enum_words(type.enums);
        case ORU_DO_TYPE_SEQUENCE:
            return member_words("sequence", type.complex_els);
        case ORU_DO_TYPE_CHOICE:
            return member_words("choice", type.complex_els);
        default:
            return typecode_words(type.typecode);
    }
}

}  // namespace oructl
