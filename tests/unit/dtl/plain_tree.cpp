#include <algorithm>

#include "tests/unit/dtl/plain_walk.h"

namespace oru::test {
namespace {

std::string show(const PlainNode &node) {
    std::string text = (node.hidden ? "~" : "") + node.name;
    if (node.uri)
        text += "(" + *node.uri + ")";
    std::string props;
    for (const auto &[name, value] : node.props) {
        if (name != "_uri" && name != "_mr")
            props += (props.empty() ? "" : ",") + name + "=" + show(value);
    }
    if (!props.empty())
        text += "[" + props + "]";
    if (node.error)
        text += "!" + std::to_string(node.error->first) + " " + node.error->second;
    const std::string children = show_children(node);
    return children.empty() ? text : text + "{" + children + "}";
}

// What a node takes along from the one whose place it takes.
void take_over(const PlainNode &child, PlainNode &moved) {
    moved.has_props = true;
    moved.name = child.name + "." + moved.name;
    if (child.has_props) {
        const std::string prefix = moved.name.substr(moved.name.find('.') + 1) + ".";
        for (auto &[name, value] : moved.props)
            name = prefix + name;
        moved.props.insert(moved.props.end(), child.props.begin(), child.props.end());
    }
    if (child.uri)
        moved.set(child.name + ".__uri", UriText{*child.uri});
}

}  // namespace

const FakeValue *PlainNode::value(const std::string &wanted) const {
    for (const auto &prop : props) {
        if (prop.first == wanted)
            return &prop.second;
    }
    return nullptr;
}

void PlainNode::set(const std::string &wanted, const FakeValue &to) {
    has_props = true;
    for (auto &prop : props) {
        if (prop.first == wanted) {
            prop.second = to;
            return;
        }
    }
    props.emplace_back(wanted, to);
}

PlainNode *PlainNode::next(const PlainNode *child) const {
    auto at = children.begin();
    if (child != nullptr)
        at = std::find(children.begin(), children.end(), child) + 1;
    return at == children.end() ? nullptr : *at;
}

bool PlainNode::has(const PlainNode *child) const {
    return std::find(children.begin(), children.end(), child) != children.end();
}

void PlainNode::hide_behind(const PlainNode *child, bool hide) {
    for (PlainNode *node = next(child); node != nullptr; node = next(node))
        node->hidden = hide;
}

void flatten(PlainNode &parent, PlainNode &child) {
    const PlainNode *end = parent.next(&child);
    const PlainNode *last_moved = nullptr;
    PlainNode *node = &child;
    while (node != end) {
        if (node->children.empty()) {
            node = parent.next(node);
            continue;
        }
        // What is moved goes behind what was moved before, by whichever node.
        for (PlainNode *moved : node->children) {
            take_over(*node, *moved);
            moved->parent = &parent;
            const PlainNode *place = last_moved != nullptr ? last_moved : node;
            parent.children.insert(
                std::find(parent.children.begin(), parent.children.end(), place) + 1, moved);
            last_moved = moved;
        }
        node->children.clear();
        PlainNode *next = parent.next(node);
        parent.children.erase(std::find(parent.children.begin(), parent.children.end(), node));
        node = next;
    }
}

std::string show_children(const PlainNode &node) {
    std::string text;
    for (const PlainNode *child : node.children)
        text += (text.empty() ? "" : " ") + show(*child);
    return text;
}

}  // namespace oru::test
