#include "object_text.h"

#include "handles.h"
#include "model_words.h"
#include "terminal_text.h"
#include "value_text.h"

namespace oructl {
namespace {

void add_line(ORUDoStrbuf *buf, int32_t tabs, const std::string &text) {
    oru_do_strbuf_add_tab(buf, tabs);
    oru_do_strbuf_add_string(buf, (text + "\n").c_str());
}

// ---- Trees ----

class Drawing {
  public:
    Drawing(ORUDoStrbuf *buf, int32_t tabs) : buf_(buf), tabs_(tabs) {}

    void draw(ORUDoDtree *node, const std::string &head, const std::string &indent) {
        std::string title = head + text_of(oru_do_dtree_get_name(node));
        if (ORUDoUri *uri = oru_do_dtree_get_mr_uri(node))
            title += "  " + uri_words(uri);
        add_line(buf_, tabs_, shown_in_line(title));
        const int32_t count = oru_do_dtree_get_child_count(node);
        draw_content(node, indent + (count > 0 ? "│ " : "  "));
        EachChild each(node);
        for (int32_t i = 1; ORUDoDtree *child = each(); ++i)
            draw(child, indent + (i < count ? "├── " : "└── "),
                 indent + (i < count ? "│   " : "    "));
    }

  private:
    void draw_content(ORUDoDtree *node, const std::string &indent) {
        if (ORUDoError *error = oru_do_dtree_get_error(node))
            add_line(buf_, tabs_, indent + error_words(error));
        for (EachProperty each(oru_do_dtree_get_properties(node));
             ORUDoProperty *property = each();) {
            add_line(buf_, tabs_,
                     indent + shown_in_line(text_of(oru_do_property_get_name(property)) + " = " +
                                            value_words(oru_do_property_get_value(property))));
        }
    }

    ORUDoStrbuf *buf_;
    int32_t tabs_;
};

// ---- Descriptions ----

std::string constraint_words(ORUDoConstraintList *list) {
    std::string words;
    for (const std::string &line : constraint_lines(list))
        words += "  " + line;
    return words;
}

std::string typedef_words(ORUDoTypedefMeta *meta);

std::string members_words(const char *kind, ORUDoNtlist *list) {
    std::vector<std::string> members;
    const int32_t count = list != nullptr ? oru_do_ntlist_get_len(list) : 0;
    for (int32_t i = 0; i < count; ++i) {
        ORUDoNtlistItem *item = oru_do_ntlist_get_item(list, i);
        members.push_back(text_of(oru_do_ntlist_item_get_name(item)) + " (" +
                          typedef_words(oru_do_ntlist_item_get_typedef(item)) + ")");
    }
    return std::string(kind) + ": " + joined(members);
}

std::string typedef_words(ORUDoTypedefMeta *meta) {
    switch (oru_do_typedef_meta_get_category(meta)) {
        case ORU_TYPEDEF_ENUM:
            return enum_words(oru_do_typedef_meta_get_enums(meta));
        case ORU_TYPEDEF_SEQUENCE:
            return members_words("sequence", oru_do_typedef_meta_get_sequence_members(meta));
        case ORU_TYPEDEF_CHOICE:
            return members_words("choice", oru_do_typedef_meta_get_choices(meta));
        default:
            return typecode_words(oru_do_typedef_meta_get_simple_type(meta)) +
                   constraint_words(oru_do_typedef_meta_get_constraint_list(meta));
    }
}

}  // namespace

void dtree_text(ORUDoDtree *dtree, int32_t tabs, ORUDoStrbuf *buf) {
    Drawing(buf, tabs).draw(dtree, "", "");
}

void typedef_text(ORUDoTypedefMeta *meta, int32_t tabs, ORUDoStrbuf *buf) {
    add_line(buf, tabs, text_of(oru_do_typedef_meta_get_name(meta)) + "  " + typedef_words(meta));
}

void ntlist_text(ORUDoNtlist *list, int32_t tabs, ORUDoStrbuf *buf) {
    for (int32_t i = 0; i < oru_do_ntlist_get_len(list); ++i) {
        ORUDoNtlistItem *item = oru_do_ntlist_get_item(list, i);
        add_line(buf, tabs,
                 text_of(oru_do_ntlist_item_get_name(item)) + "  " +
                     typedef_words(oru_do_ntlist_item_get_typedef(item)));
    }
}

void prop_meta_text(ORUDoPropMeta *meta, int32_t tabs, ORUDoStrbuf *buf) {
    static constexpr const char *kCategories[] = {"key", "reference", "configuration",
                                                  "operational"};
    const int32_t category = oru_do_prop_meta_get_category(meta);
    std::string line = text_of(oru_do_prop_meta_get_name(meta)) + "  " + type_words(meta);
    if (category >= ORU_PROP_KEY && category <= ORU_PROP_OPER)
        line += std::string("  ") + kCategories[category];
    add_line(buf, tabs, line + "  " + access_words(oru_do_prop_meta_get_max_access(meta)));
}

void prop_meta_list_text(ORUDoPropMetaList *list, int32_t tabs, ORUDoStrbuf *buf) {
    for (int32_t i = 0; i < oru_do_prop_meta_list_get_len(list); ++i)
        prop_meta_text(oru_do_prop_meta_list_get_prop_meta(list, i), tabs, buf);
}

void mr_meta_text(ORUDoMrMeta *meta, int32_t tabs, ORUDoStrbuf *buf) {
    add_line(buf, tabs,
             text_of(oru_do_mr_meta_get_mr_fq_name(meta)) + "  " +
                 access_words(oru_do_mr_meta_get_max_access(meta)));
}

void mr_meta_list_text(ORUDoMrMetaList *list, int32_t tabs, ORUDoStrbuf *buf) {
    for (int32_t i = 0; i < oru_do_mr_meta_list_get_len(list); ++i)
        mr_meta_text(oru_do_mr_meta_list_get_mr_meta(list, i), tabs, buf);
}

std::string uri_words(ORUDoUri *uri) {
    return written([&](ORUDoStrbuf *buf) { oru_do_uri_to_strbuf(uri, 0, buf); });
}

std::string error_words(ORUDoError *error) {
    const char *msg = oru_do_error_get_msg(error);
    std::string words = "error " + std::to_string(oru_do_error_get_code(error)) + ": " +
                        (msg != nullptr ? msg : "");
    while (words.ends_with('\n'))
        words.pop_back();
    return words;
}

}  // namespace oructl
