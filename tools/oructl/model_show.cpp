#include <cstdio>

#include "model_print.h"
#include "model_words.h"
#include "terminal_text.h"

namespace oructl {
namespace {

// Lines of a section, whose title goes before the first.
class Section {
  public:
    explicit Section(std::string title) : title_(std::move(title)) {}

    void begin() {
        if (!begun_)
            put("%s\n", title_.c_str());
        begun_ = true;
    }

    void line(const std::string &name, const std::string &what, const std::string &more) {
        begin();
        std::string text = "  " + padded(name, 24) + " " + padded(what, 20) + " " + more;
        text.erase(text.find_last_not_of(' ') + 1);
        put("%s\n", text.c_str());
    }

    // What belongs to the line above, in the last column.
    static void continue_line(const std::string &text) { put("%*s%s\n", 48, "", text.c_str()); }

  private:
    static std::string padded(std::string text, size_t width) {
        if (text.size() < width)
            text.resize(width, ' ');
        return text;
    }

    std::string title_;
    bool begun_ = false;
};

void print_property(Section &section, ORUDoPropMeta *property, const std::string &more) {
    auto lines = constraint_lines(oru_do_prop_meta_get_constraint_list(property));
    if (!more.empty())
        lines.insert(lines.begin(), more);
    section.line(text_of(oru_do_prop_meta_get_name(property)), type_words(property),
                 lines.empty() ? "" : lines.front());
    for (size_t i = 1; i < lines.size(); ++i)
        Section::continue_line(lines[i]);
}

void print_attributes(const char *title, ORUMdAttrMeta *first) {
    Section section(title);
    for (const ORUMdAttrMeta &attr : records(first))
        print_property(section, attr.prop_meta, "");
}

// The groups of secondary keys are told apart by the numbers of their keys, which begin anew.
void print_secondary_keys(ORUMdAttrMeta *first) {
    Section section("secondary keys");
    for (const ORUMdAttrMeta &key : records(first)) {
        const bool goes_on = oru_do_prop_meta_get_first_key_in_group(key.prop_meta) != nullptr;
        print_property(section, key.prop_meta, goes_on ? "with the key above" : "");
    }
}

std::string role_words(ORUDoPropMeta *ref) {
    static constexpr const char *kRoles[] = {"reference", "child", "parent", "peer"};
    const int32_t role = oru_do_prop_meta_get_ref_role(ref);
    std::string words = role >= ORU_REF_NONE && role <= ORU_REF_PEER ? kRoles[role] : kRoles[0];
    if (oru_do_prop_meta_get_multiplicity(ref) == ORU_MULTIPLICITY_MANY)
        words += ", many";
    return words;
}

void print_references(ORUMdRefMeta *first) {
    Section section("references");
    for (const ORUMdRefMeta &ref : records(first)) {
        section.line(text_of(ref.name), role_words(ref.prop_meta), text_of(ref.target_name));
        for (const std::string &line :
             constraint_lines(oru_do_prop_meta_get_constraint_list(ref.prop_meta)))
            Section::continue_line(line);
    }
}

void print_parameters(Section &section, const char *direction, ORUDoPropMetaList *list) {
    const int32_t count = list != nullptr ? oru_do_prop_meta_list_get_len(list) : 0;
    for (int32_t i = 0; i < count; ++i)
        print_property(section, oru_do_prop_meta_list_get_prop_meta(list, i), direction);
}

void print_actions(ORUDoActMetaList *list) {
    if (list == nullptr)
        return;
    ORUDoIter iter;
    oru_do_iter_init(&iter);
    oru_do_act_meta_list_iter(list, &iter);
    while (oru_do_act_meta_list_has_next(&iter) != 0) {
        ORUDoActMeta *action = oru_do_act_meta_list_get_next(&iter);
        Section section("action " + text_of(oru_do_act_meta_get_name(action)));
        section.begin();
        print_parameters(section, "in", oru_do_act_meta_get_in_params(action));
        print_parameters(section, "out", oru_do_act_meta_get_out_params(action));
        print_parameters(section, "error", oru_do_act_meta_get_err_params(action));
    }
}

void print_implementations(ORUMdMrMetaList *first) {
    Section section("implemented by");
    for (const ORUMdMrMetaList &entry : records(first)) {
        std::string key;
        if (ORUDoValue *value = oru_md_get_const_key(entry.mr)) {
            int32_t code = 0;
            key = std::string("for the key ") + oru_do_value_get_string(value, &code);
        }
        section.line(qualified_name(*entry.mr), key, "");
    }
}

void print_fact(const char *name, const std::string &words) {
    put("  %-16s %s\n", name, words.c_str());
}

void print_resource(ORUMdMrMeta &mr) {
    put("%s\n", qualified_name(mr).c_str());
    print_fact("kind", std::string(kind_of(*mr.package)) + " resource");
    if (mr.parent_name != nullptr)
        print_fact(mr.is_lib != 0 ? "extends" : "implements", text_of(mr.parent_name));
    print_fact("access", access_words(oru_do_mr_meta_get_max_access(mr.do_mr_meta)));
    if (oru_do_mr_meta_is_non_persistent_mr(mr.do_mr_meta) != 0)
        print_fact("persistent", "no");
    print_attributes("keys", mr.primary_keys);
    print_secondary_keys(mr.secondary_keys);
    print_references(mr.refs);
    print_attributes("configuration", mr.cd_attrs);
    print_attributes("operational", mr.od_attrs);
    print_actions(oru_do_mr_meta_get_act_meta_list(mr.do_mr_meta));
    print_implementations(mr.impl_mr_metas);
}

void print_definition(const char *kind, const ORUMdCodMeta &definition) {
    put("%s\n", qualified_name(*definition.package, definition.name).c_str());
    print_fact("kind", kind);
    if (definition.extends_name != nullptr)
        print_fact("extends", text_of(definition.extends_name));
    Section section("attributes");
    print_parameters(section, "", definition.prop_list);
}

void print_type(const ORUMdPkgMeta &package, ORUMdTypedefMeta &type) {
    put("%s\n", qualified_name(package, type.name).c_str());
    print_fact("kind", "type");
    print_fact("definition", definition_words(type));
    for (const std::string &line : constraint_lines(type.constraint_list))
        print_fact("constraint", line);
}

// A name as it is asked for: with a package, with or without its version, or alone.
class Wanted {
  public:
    explicit Wanted(const std::string &name)
        : package_(name.find('/') == std::string::npos ? "" : name.substr(0, name.find('/'))),
          entity_(name.substr(name.find('/') + 1)) {}

    bool in(const ORUMdPkgMeta &package) const {
        return package_.empty() || package_ == text_of(package.name) ||
               package_ == package_name(package);
    }
    bool is(ORUDoName *name) const { return text_of(name) == entity_; }

  private:
    std::string package_;
    std::string entity_;
};

// Hands those that are wanted to `print`, with an empty line between any two.
template <class Record, class Print>
void print_wanted(const Wanted &wanted, Record *first, bool &printed, Print &&print) {
    for (Record &record : records(first)) {
        if (!wanted.is(record.name))
            continue;
        if (printed)
            put("\n");
        printed = true;
        print(record);
    }
}

}  // namespace

bool print_entity(const Model &model, const std::string &name) {
    const Wanted wanted(name);
    bool printed = false;
    for (const ORUMdPkgMeta *package : model.packages()) {
        if (!wanted.in(*package))
            continue;
        print_wanted(wanted, package->mrs, printed, print_resource);
        print_wanted(wanted, package->cds, printed, [](const ORUMdCodMeta &definition) {
            print_definition("configuration data", definition);
        });
        print_wanted(wanted, package->ods, printed, [](const ORUMdCodMeta &definition) {
            print_definition("operational data", definition);
        });
        print_wanted(wanted, package->typedefs, printed,
                     [&](ORUMdTypedefMeta &type) { print_type(*package, type); });
    }
    if (!printed)
        tell(name + ": there is nothing of that name");
    return printed;
}

}  // namespace oructl
