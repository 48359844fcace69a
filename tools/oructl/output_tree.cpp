#include <algorithm>

#include "addresses.h"
#include "model_words.h"
#include "object_text.h"
#include "output.h"
#include "output_text.h"
#include "terminal_text.h"
#include "value_text.h"

namespace oructl {

namespace {

using Cells = std::vector<std::pair<std::string, std::string>>;

// The rows of a tree: each leaf with what stands above it.
class Flattening {
  public:
    void add(ORUDoDtree *node, Cells above) {
        const std::string name = text_of(oru_do_dtree_get_name(node));
        for (EachProperty each(oru_do_dtree_get_properties(node));
             ORUDoProperty *property = each();) {
            const std::string attribute = oru_do_property_get_name_string(property);
            // those are in every row, and as long as the rest
            if (!attribute.starts_with('_'))
                put(above, name + "." + attribute, cell_text(oru_do_property_get_value(property)));
        }
        if (ORUDoError *error = oru_do_dtree_get_error(node))
            put(above, name, error_words(error));
        bool is_leaf = true;
        for (EachChild each(node); ORUDoDtree *child = each();) {
            if (oru_do_dtree_is_hidden(child) != 0)
                continue;
            add(child, above);
            is_leaf = false;
        }
        if (is_leaf && !above.empty())
            rows_.push_back(std::move(above));
    }

    std::string lines() const {
        std::string text;
        for (const Cells &row : rows_) {
            for (const auto &[name, value] : row)
                text += name + " = " + value + "\n";
            text += "\n";
        }
        return text;
    }

    std::string draw() const {
        if (rows_.empty())
            return "";
        TextTable table(names_);
        for (const Cells &row : rows_) {
            std::vector<std::string> cells(names_.size(), "-");
            for (const auto &[name, text] : row)
                cells[static_cast<size_t>(std::ranges::find(names_, name) - names_.begin())] = text;
            table.add(std::move(cells));
        }
        return table.draw();
    }

  private:
    void put(Cells &cells, std::string name, std::string text) {
        if (std::ranges::find(names_, name) == names_.end())
            names_.push_back(name);
        cells.emplace_back(std::move(name), std::move(text));
    }

    std::vector<std::string> names_;
    std::vector<Cells> rows_;
};

std::string rows_of(ORUDoDtree *tree, bool as_tables) {
    std::vector<std::pair<std::string, Flattening>> tables;
    for (EachChild each(tree); ORUDoDtree *child = each();) {
        if (oru_do_dtree_is_hidden(child) != 0)
            continue;
        const std::string name = text_of(oru_do_dtree_get_name(child));
        if (tables.empty() || tables.back().first != name)
            tables.emplace_back(name, Flattening());
        tables.back().second.add(child, {});
    }
    std::string text;
    for (const auto &[name, table] : tables)
        text += as_tables ? table.draw() : shown(table.lines());
    return text;
}

std::string compact_children(ORUDoDtree *node);

// The attributes of a node, and its children under their names.
std::string compact_node(ORUDoDtree *node) {
    std::string members;
    const auto add = [&](const std::string &text) {
        members += (members.empty() || text.empty() ? "" : ",") + text;
    };
    if (ORUDoProperties *props = oru_do_dtree_get_properties(node)) {
        const std::string text = properties_json(props, ORU_JSON_OPT_COMPACT);
        add(text.size() > 2 ? text.substr(1, text.size() - 2) : "");
    }
    if (ORUDoError *error = oru_do_dtree_get_error(node))
        add("\"%error\":\"" + json_escaped(error_words(error)) + "\"");
    add(compact_children(node));
    return "{" + members + "}";
}

std::string compact_children(ORUDoDtree *node) {
    std::vector<std::pair<std::string, std::string>> lists;
    for (EachChild each(node); ORUDoDtree *child = each();) {
        if (oru_do_dtree_is_hidden(child) != 0)
            continue;
        const std::string name = json_escaped(text_of(oru_do_dtree_get_name(child)));
        if (lists.empty() || lists.back().first != name)
            lists.emplace_back(name, "");
        std::string &list = lists.back().second;
        list += (list.empty() ? "" : ",") + compact_node(child);
    }
    std::string members;
    for (const auto &[name, list] : lists)
        members += (members.empty() ? "\"" : ",\"") + name + "\":[" + list + "]";
    return members;
}

// The children of a node beneath another one, as they can be written in JSON.
void copy_children(ORUDoDtree *from, ORUDoDtree *to) {
    for (EachChild each(from); ORUDoDtree *child = each();) {
        if (oru_do_dtree_is_hidden(child) != 0)
            continue;
        ORUDoDtree *const copy = oru_do_dtree_add_child(to, oru_do_dtree_get_name(child));
        if (copy == nullptr)
            throw std::bad_alloc();
        if (ORUDoUri *uri = oru_do_dtree_get_mr_uri(child))
            oru_do_dtree_set_mr_uri(copy, json_safe(uri).get());
        if (ORUDoProperties *props = oru_do_dtree_get_properties(child))
            oru_do_dtree_set_properties(copy, json_safe(props).get());
        oru_do_dtree_set_error(copy, oru_do_dtree_get_error(child));
        copy_children(child, copy);
    }
}

std::string tree_json(ORUDoDtree *tree) {
    const auto copy = made<Dtree>(oru_do_dtree_new(oru_do_dtree_get_name(tree)));
    oru_do_dtree_set_error(copy.get(), oru_do_dtree_get_error(tree));
    copy_children(tree, copy.get());
    return shown(written([&](ORUDoStrbuf *buf) { oru_do_dtree_to_json(copy.get(), buf); }));
}

}  // namespace

std::string tree_text(ORUDoDtree *tree, DataForm form) {
    switch (form) {
        case DataForm::table:
        case DataForm::text:
            return rows_of(tree, form == DataForm::table);
        case DataForm::json:
            return checked_json(tree_json(tree));
        case DataForm::compact:
            return checked_json("{" + compact_children(tree) + "}");
        default:
            break;
    }
    std::string text;
    for (EachChild each(tree); ORUDoDtree *child = each();) {
        if (oru_do_dtree_is_hidden(child) != 0)
            continue;
        const std::string one = written([&](ORUDoStrbuf *buf) {
            if (form == DataForm::xml)
                oru_do_dtree_to_xml_tab(0, nullptr, nullptr, child, buf);
            else
                dtree_text(child, 0, buf);
        });
        text += form == DataForm::xml ? checked_xml(one) : shown(without_location(one));
    }
    return text;
}

}  // namespace oructl
