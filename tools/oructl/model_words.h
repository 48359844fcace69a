// Records of a model in words.
#ifndef ORU_TOOLS_ORUCTL_MODEL_WORDS_H
#define ORU_TOOLS_ORUCTL_MODEL_WORDS_H

#include <oru/oru.h>

#include <string>
#include <vector>

namespace oructl {

std::string text_of(ORUDoName *name);  // empty for null

// "package:version", and with a name behind it.
std::string package_name(const ORUMdPkgMeta &package);
std::string qualified_name(const ORUMdPkgMeta &package, ORUDoName *name);
std::string qualified_name(const ORUMdMrMeta &mr);

// "library" or "implementation".
const char *kind_of(const ORUMdPkgMeta &package);

// The name of a built-in type, "?" for none.
std::string typecode_words(int32_t typecode);

// "enumeration: down = 0, up = 1".
std::string enum_words(ORUDoNvlist *labels);

// "1 key", "3 keys".
std::string count_of(size_t count, const char *noun);

// Behind the texts a comma each but the last.
std::string joined(const std::vector<std::string> &texts);

std::string access_words(uint8_t access);

// The type as the package names it; an array of it where there are many.
std::string type_words(ORUDoPropMeta *property);

// The constraints on one line each, with the conditions under which they apply.
std::vector<std::string> constraint_lines(ORUDoConstraintList *list);

// What a type is made of: "unsignedByte", "enumeration: down = 0, up = 1", "sequence: row, rack".
std::string definition_words(ORUMdTypedefMeta &type);

}  // namespace oructl

#endif
