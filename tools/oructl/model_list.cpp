#include <cstdio>

#include "model_print.h"
#include "model_words.h"
#include "terminal_text.h"

namespace oructl {
namespace {

void print_row(const char *kind, ORUDoName *name, const std::string &words) {
    put("  %-18s %-24s %s\n", kind, text_of(name).c_str(), words.c_str());
}

template <class Record>
size_t length(Record *first) {
    size_t count = 0;
    for ([[maybe_unused]] Record &record : records(first))
        ++count;
    return count;
}

std::string definition_size(const ORUMdCodMeta &definition) {
    const int32_t count =
        definition.prop_list != nullptr ? oru_do_prop_meta_list_get_len(definition.prop_list) : 0;
    std::string words = count_of(static_cast<size_t>(count), "attribute");
    if (definition.extends_name != nullptr)
        words += ", extends " + text_of(definition.extends_name);
    return words;
}

std::string resource_size(const ORUMdMrMeta &mr) {
    std::vector<std::string> parts{
        count_of(length(mr.primary_keys) + length(mr.secondary_keys), "key"),
        count_of(length(mr.cd_attrs) + length(mr.od_attrs), "attribute"),
        count_of(length(mr.refs), "reference")};
    if (mr.parent_name != nullptr)
        parts.push_back((mr.is_lib != 0 ? "extends " : "implements ") + text_of(mr.parent_name));
    return joined(parts);
}

void print_package(const ORUMdPkgMeta &package) {
    put("%s  (%s)\n", package_name(package).c_str(), kind_of(package));
    for (ORUMdTypedefMeta &type : records(package.typedefs))
        print_row("type", type.name, definition_words(type));
    for (ORUMdCodMeta &definition : records(package.cds))
        print_row("configuration data", definition.name, definition_size(definition));
    for (ORUMdCodMeta &definition : records(package.ods))
        print_row("operational data", definition.name, definition_size(definition));
    for (ORUMdMrMeta &mr : records(package.mrs))
        print_row("resource", mr.name, resource_size(mr));
}

}  // namespace

bool print_list(const Model &model) {
    for (const ORUMdPkgMeta *package : model.packages())
        print_package(*package);
    if (model.packages().empty())
        tell("there are no packages");
    return !model.packages().empty();
}

}  // namespace oructl
