// Entry points, and the root of a document.
#include "dtl/parser.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "do/strbuf.h"
#include "oru/rc.h"

namespace oru::dtl {
namespace {

// 4. The address of the root. One that does not parse leaves the root without.
void read_root_address(Parser &parser, ORUDtlNode *root, const xmlNode *element) {
    const XmlAttribute text(element, "uri");
    if (!text)
        return;
    const auto uri = Ref<ORUDoUri>::adopt(oru_do_uri_new_parse_unescape_key(text.text()));
    if (!uri)
        return;
    const FoundMr found = find_mr(element);
    if (found.error)
        oru_dtl_tree_set_error(root, found.error.get());
    if (found.mr != nullptr)
        parser.address(root, uri.get(), found.mr->do_mr_meta);
    read_mr_op(root, element, uri.get());
    read_mr_attributes(root, element);
}

// 6.
void trace_tree(ORUDtlNode *doc) {
    if (!trace_enabled(Level::reference) || doc->first_child == nullptr)
        return;
    const auto text = Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text)
        return;
    oru_dtl_tree_to_xml(doc, 0, text.get());
    if (oru_do_strbuf_get_err(text.get()) == 0)
        ORU_TRACE(Level::reference, "%s", oru_do_strbuf_to_string(text.get()));
}

ORUDtlNode *read_document(Parser &parser, const XmlDocument &document) {
    ORUDtlNode *doc = parser.made(oru_dtl_tree_new());  // 1
    const xmlNode *element = document.root();           // 2
    if (doc == nullptr || element == nullptr)
        return doc;
    const ElementPlace place(parser, element);
    ORUDtlNode *root = parser.made(
        oru_dtl_tree_add_child_w_strname_type(doc, xml_name(element), ORU_DTL_NODE_ROOT));  // 3
    if (root == nullptr)
        return doc;
    read_root_address(parser, root, element);  // 4
    read_children(parser, root, element, 1);   // 5
    trace_tree(doc);                           // 6
    return doc;
}

// The caller's error is written only when there is one.
ORUDtlNode *finish(Parser &parser, ORUDtlNode *doc, ORUDoError **errp) {
    if (parser.error)
        *errp = parser.error.release();
    return doc;
}

ORUDtlNode *refuse(Parser &parser, const char *words, ORUDoError **errp) {
    parser.fail(ORU_RC_SYSCALL, words);
    return finish(parser, nullptr, errp);
}

}  // namespace

void Parser::fail(int32_t code, const char *words) {
    error = Ref<ORUDoError>::adopt(oru_do_error_new(code, words));
}

void Parser::lack_node() {
    fail(ORU_RC_SYSCALL, "Failed to allocate DTL Node");
}

ORUDtlNode *Parser::made(ORUDtlNode *node) {
    if (node == nullptr)
        lack_node();
    return node;
}

void Parser::address(ORUDtlNode *node, ORUDoUri *uri, ORUDoMrMeta *mr_meta) {
    const ORUDtlMrInfo *info = oru_dtl_tree_init_mr_info(node, uri, mr_meta);
    if (info == nullptr || (mr_meta != nullptr && info->prop_meta_list == nullptr))
        lack_node();
}

}  // namespace oru::dtl

using oru::Level;
using oru::dtl::Parser;

ORUDtlNode *oru_dtl_from_file(const char *dtl_filename, ORUDoError **errp) {
    ORU_REQUIRE(dtl_filename);
    ORU_REQUIRE(errp);
    Parser parser{dtl_filename};
    const int fd = open(dtl_filename, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        ORU_TRACE(Level::failure, "Failed to open DTL file '%s': %s", dtl_filename,
                  std::strerror(errno));
        return oru::dtl::refuse(parser, "new_dtl_iter: Failed to open DTL file", errp);
    }
    const oru::XmlDocument document = oru::read_xml(fd, dtl_filename);
    close(fd);
    if (!document) {
        ORU_TRACE(Level::failure, "Failed to read DTL file %s", dtl_filename);
        return oru::dtl::refuse(parser, "new_dtl_iter: Failed to read DTL file", errp);
    }
    return oru::dtl::finish(parser, oru::dtl::read_document(parser, document), errp);
}

ORUDtlNode *oru_dtl_from_str(const char *dtl_str, ORUDoError **errp) {
    ORU_REQUIRE(dtl_str);
    ORU_REQUIRE(errp);
    Parser parser{nullptr};
    const oru::XmlDocument document = oru::read_xml_text(dtl_str, std::strlen(dtl_str));
    if (!document)
        return oru::dtl::refuse(parser, "new_dtl_iter: Failed to parse DTL file", errp);
    return oru::dtl::finish(parser, oru::dtl::read_document(parser, document), errp);
}
