#include "package_files.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string_view>

#include "xml_text.h"

namespace oructl {
namespace {

namespace fs = std::filesystem;

struct FreeDocument {
    void operator()(xmlDoc *document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, FreeDocument>;

std::string_view name_of(const xmlNode *node) {
    return reinterpret_cast<const char *>(node->name);
}

bool has_attribute(const xmlNode *element, const char *name) {
    return xmlHasNsProp(element, reinterpret_cast<const xmlChar *>(name), nullptr) != nullptr;
}

std::string value_of(const xmlAttr *attribute) {
    std::string value;
    for (const xmlNode *part = attribute->children; part != nullptr; part = part->next) {
        if (part->type == XML_TEXT_NODE && part->content != nullptr)
            value += reinterpret_cast<const char *>(part->content);
    }
    return value;
}

const xmlNode *first_element(const xmlNode *node) {
    while (node != nullptr && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

template <class Visit>
void for_each_child(const xmlNode *element, Visit &&visit) {
    for (const xmlNode *child = first_element(element->children); child != nullptr;
         child = first_element(child->next))
        visit(child);
}

std::string content_of(const fs::path &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

std::vector<fs::path> package_files(const fs::path &folder) {
    std::vector<fs::path> files;
    for (const auto &entry : fs::directory_iterator(folder)) {
        if (entry.path().filename().string().ends_with(kPackageSuffix))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

struct PackageFiles::Reader {
    PackageFiles &out;
    std::string file;

    Fault fault(const xmlNode *element, std::string words) const {
        return {file, static_cast<int32_t>(xmlGetLineNo(element)), std::string(name_of(element)),
                std::move(words)};
    }

    void require(const xmlNode *element, const char *attribute) const {
        if (!has_attribute(element, attribute))
            out.faults_.push_back(
                fault(element, std::string("the attribute '") + attribute + "' is missing"));
    }

    void note_mentions(const xmlNode *top) const;
    void check_definitions(const xmlNode *group, std::string_view name) const;
    void check_root(const xmlNode *root, const std::string &content) const;
    void read(const std::string &content) const;
};

// Walked without recursion: nesting comes from outside.
void PackageFiles::Reader::note_mentions(const xmlNode *top) const {
    std::vector<const xmlNode *> pending{top};
    while (!pending.empty()) {
        const xmlNode *element = pending.back();
        pending.pop_back();
        for (const xmlAttr *attribute = element->properties; attribute != nullptr;
             attribute = attribute->next)
            out.mentions_.try_emplace(value_of(attribute), fault(element, ""));
        const size_t before = pending.size();
        for_each_child(element, [&](const xmlNode *child) { pending.push_back(child); });
        std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(before), pending.end());
    }
}

void PackageFiles::Reader::check_definitions(const xmlNode *group, std::string_view name) const {
    for_each_child(group, [&](const xmlNode *definition) {
        if (name_of(definition) == name)
            require(definition, "name");
    });
}

// The library looks for the opening of the root in the text, and only in this form.
void PackageFiles::Reader::check_root(const xmlNode *root, const std::string &content) const {
    const std::string name(name_of(root));
    if (name != "oru2dLib" && name != "oru2dImpl") {
        out.faults_.push_back(
            fault(root, "no package: the root has to be 'oru2dLib' or 'oru2dImpl'"));
        return;
    }
    require(root, "package");
    require(root, "version");
    if (content.find("<" + name + " ") == std::string::npos)
        out.faults_.push_back(fault(root, "not read: a blank has to follow '<" + name + "'"));
    for_each_child(root, [&](const xmlNode *group) {
        if (name_of(group) == "configDataDef")
            check_definitions(group, "configData");
        else if (name_of(group) == "operationalDataDef")
            check_definitions(group, "operationalData");
    });
}

void PackageFiles::Reader::read(const std::string &content) const {
    const XmlWords parser;
    const Document document(xmlReadMemory(content.data(), static_cast<int>(content.size()), nullptr,
                                          nullptr, XML_PARSE_NONET));
    if (!document) {
        out.faults_.push_back({file, parser.line, "", parser.words});
        return;
    }
    const xmlNode *root = xmlDocGetRootElement(document.get());
    check_root(root, content);
    note_mentions(root);
}

PackageFiles::PackageFiles(const fs::path &folder) {
    const auto files = package_files(folder);
    if (files.empty())
        faults_.push_back(
            {folder.string(), 0, "", std::string("no file ends in '") + kPackageSuffix + "'"});
    for (const fs::path &file : files) {
        const std::string content = content_of(file);
        // What is larger than the parser's numbers the library does not read either.
        if (content.size() <= INT32_MAX)
            Reader{*this, file.string()}.read(content);
    }
}

// The message's own words are shorter than the names of a model, as a rule.
void PackageFiles::locate(Fault &fault) const {
    if (!fault.file.empty())
        return;
    const Fault *place = nullptr;
    size_t longest = 0;
    std::istringstream words(fault.words);
    for (std::string word; words >> word;) {
        auto found = mentions_.find(word);
        if (found == mentions_.end())
            found = mentions_.find(word.substr(word.rfind('/') + 1));
        if (found != mentions_.end() && word.size() > longest) {
            place = &found->second;
            longest = word.size();
        }
    }
    if (place == nullptr)
        return;
    fault.file = place->file;
    fault.line = place->line;
    fault.element = place->element;
}

}  // namespace oructl
