#include "frame/xml_tree.h"

#include <libxml/parserInternals.h>

#include <algorithm>

namespace {

// The parser hands the sign of references over as this, since it may have to be read once more.
constexpr char kAmpersand[] = "&#38;";
constexpr size_t kAmpersandSize = sizeof kAmpersand - 1;

constexpr size_t kLongestText = XML_MAX_TEXT_LENGTH;
constexpr int kLastLine = 65535;  // of those that a node can hold

size_t length_of(const xmlChar *text) {
    return std::strlen(reinterpret_cast<const char *>(text));
}

// Puts the sign in the place of what stands for it.
void read_ampersands(char *text, size_t size) {
    auto *out = static_cast<char *>(std::memchr(text, kAmpersand[0], size));
    if (out == nullptr)
        return;
    for (const char *in = out; *in != '\0';) {
        *out++ = *in;
        in += std::strncmp(in, kAmpersand, kAmpersandSize) == 0 ? kAmpersandSize : 1;
    }
    *out = '\0';
}

}  // namespace

oru::XmlArena::~XmlArena() {
    while (blocks_ != nullptr)
        xmlFree(std::exchange(blocks_, blocks_->next));
}

bool oru::XmlArena::add_block(size_t size) {
    const size_t room = std::max(size, kBlockSize - sizeof(Block));
    auto *block = static_cast<Block *>(xmlMalloc(sizeof(Block) + room));
    if (block == nullptr)
        return false;
    block->next = std::exchange(blocks_, block);
    next_ = reinterpret_cast<char *>(block + 1);
    left_ = room;
    return true;
}

bool oru::XmlText::append(const xmlChar *text, size_t size) {
    const size_t needed = size_ + size;
    if (needed > kLongestText)
        return false;
    if (needed >= capacity_) {
        const size_t capacity = std::max(needed + 1, 2 * capacity_);
        auto *grown = static_cast<xmlChar *>(xmlRealloc(text_, capacity));
        if (grown == nullptr)
            return false;
        text_ = grown;
        capacity_ = capacity;
    }
    std::memcpy(text_ + size_, text, size);
    size_ = needed;
    return true;
}

oru::XmlTreeBuilder::XmlTreeBuilder(xmlParserCtxt &parser) : parser_(parser) {
    parser._private = this;
    xmlSAXHandler &events = *parser.sax;
    events.startElementNs = on_start;
    events.endElementNs = on_end;
    events.characters = on_text;
    events.ignorableWhitespace = on_text;
    events.cdataBlock = on_cdata;
    events.comment = on_comment;
    events.processingInstruction = on_instruction;
    events.reference = on_reference;
}

oru::XmlDocument oru::XmlTreeBuilder::take_document() {
    xmlDictReference(parser_.dict);
    return XmlDocument(std::move(arena_), parser_.dict, root_);
}

void oru::XmlTreeBuilder::refuse(void *context) {
    auto *parser = static_cast<xmlParserCtxt *>(context);
    parser->wellFormed = 0;
    xmlStopParser(parser);
}

oru::XmlTreeBuilder &oru::XmlTreeBuilder::of(void *context) {
    return *static_cast<XmlTreeBuilder *>(static_cast<xmlParserCtxt *>(context)->_private);
}

// Without memory there is no document.
template <class T>
T *oru::XmlTreeBuilder::checked(T *made) {
    if (made == nullptr) [[unlikely]]
        refuse(&parser_);
    return made;
}

xmlChar *oru::XmlTreeBuilder::copy(const xmlChar *text, size_t size) {
    auto *made = checked(static_cast<xmlChar *>(arena_.take(size + 1)));
    if (made != nullptr) {
        std::memcpy(made, text, size);
        made[size] = '\0';
    }
    return made;
}

// Behind the last child of the element at hand. Null without memory.
template <class Node>
Node *oru::XmlTreeBuilder::append(xmlElementType type, const xmlChar *name) {
    auto *node = checked(arena_.make<Node>());
    if (node == nullptr)
        return nullptr;
    node->type = type;
    node->name = name;
    node->line = static_cast<unsigned short>(std::min(parser_.input->line, kLastLine));
    node->parent = current_;
    if (current_ == nullptr)
        return node;
    node->prev = current_->last;
    (node->prev != nullptr ? node->prev->next : current_->children) = node;
    current_->last = node;
    return node;
}

// Mostly that of the element before. The texts are the parser's, one of each.
xmlNs *oru::XmlTreeBuilder::namespace_of(const xmlChar *prefix, const xmlChar *uri) {
    if (uri == nullptr)
        return nullptr;
    if (last_namespace_ != nullptr && last_namespace_->prefix == prefix &&
        last_namespace_->href == uri)
        return last_namespace_;
    auto *made = checked(arena_.make<xmlNs>());
    if (made == nullptr)
        return nullptr;
    made->type = XML_NAMESPACE_DECL;
    made->prefix = prefix;
    made->href = uri;
    return last_namespace_ = made;
}

// A prefix that stands for no namespace belongs to the name.
void oru::XmlTreeBuilder::start(const xmlChar *name, const xmlChar *prefix, const xmlChar *uri) {
    if (prefix != nullptr && uri == nullptr)
        name = checked(xmlDictQLookup(parser_.dict, prefix, name));
    auto *element = name != nullptr ? append<XmlElement>(XML_ELEMENT_NODE, name) : nullptr;
    if (element == nullptr)
        return;
    element->ns = namespace_of(prefix, uri);
    if (root_ == nullptr)
        root_ = element;
    current_ = element;
}

// Only those without a prefix can be asked for. Each comes as its name, prefix and URI, and where
// its value begins and ends.
void oru::XmlTreeBuilder::add_attributes(const xmlChar **attributes, int count) {
    const XmlProperty **link = &current_->first_property;
    for (int i = 0; i < count; ++i, attributes += 5) {
        if (attributes[1] != nullptr)
            continue;
        const auto size = static_cast<size_t>(attributes[4] - attributes[3]);
        auto *property = checked(arena_.make<XmlProperty>());
        auto *value = property != nullptr ? copy(attributes[3], size) : nullptr;
        if (value == nullptr)
            return;
        property->name = reinterpret_cast<const char *>(attributes[0]);
        property->value = reinterpret_cast<char *>(value);
        read_ampersands(reinterpret_cast<char *>(value), size);
        *link = property;
        link = &property->next;
    }
}

void oru::XmlTreeBuilder::add_text(xmlElementType type, const xmlChar *text, int size) {
    if (current_ == nullptr)
        return;
    if (text_type_ != type)
        end_text();
    in_text_ = true;
    text_type_ = type;
    if (!text_.append(text, static_cast<size_t>(size)))
        refuse(&parser_);
}

// The parser tells a text in pieces.
void oru::XmlTreeBuilder::end_text() {
    if (!in_text_)
        return;
    in_text_ = false;
    auto *content = copy(text_.text(), text_.size());
    text_.clear();
    auto *node = content != nullptr ? append<xmlNode>(text_type_, xmlStringText) : nullptr;
    if (node != nullptr)
        node->content = content;
}

void oru::XmlTreeBuilder::add_node(xmlElementType type, const xmlChar *name, const xmlChar *text) {
    if (current_ == nullptr)
        return;
    end_text();
    auto *node = append<xmlNode>(type, name);
    if (node != nullptr && text != nullptr)
        node->content = copy(text, length_of(text));
}

void oru::XmlTreeBuilder::on_start(void *context, const xmlChar *name, const xmlChar *prefix,
                                   const xmlChar *uri, int, const xmlChar **, int count, int,
                                   const xmlChar **attributes) {
    XmlTreeBuilder &builder = of(context);
    builder.end_text();
    builder.start(name, prefix, uri);
    if (builder.current_ != nullptr)
        builder.add_attributes(attributes, count);
}

void oru::XmlTreeBuilder::on_end(void *context, const xmlChar *, const xmlChar *, const xmlChar *) {
    XmlTreeBuilder &builder = of(context);
    builder.end_text();
    if (builder.current_ != nullptr)
        builder.current_ = static_cast<XmlElement *>(builder.current_->parent);
}

void oru::XmlTreeBuilder::on_text(void *context, const xmlChar *text, int size) {
    of(context).add_text(XML_TEXT_NODE, text, size);
}

void oru::XmlTreeBuilder::on_cdata(void *context, const xmlChar *text, int size) {
    of(context).add_text(XML_CDATA_SECTION_NODE, text, size);
}

void oru::XmlTreeBuilder::on_comment(void *context, const xmlChar *text) {
    of(context).add_node(XML_COMMENT_NODE, xmlStringComment, text);
}

void oru::XmlTreeBuilder::on_instruction(void *context, const xmlChar *target,
                                         const xmlChar *text) {
    of(context).add_node(XML_PI_NODE, target, text);
}

void oru::XmlTreeBuilder::on_reference(void *context, const xmlChar *name) {
    of(context).add_node(XML_ENTITY_REF_NODE, name, nullptr);
}
