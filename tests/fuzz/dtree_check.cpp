#include <oru/json.h>
#include <oru/print.h>
#include <oru/properties.h>
#include <oru/xml.h>

#include <algorithm>

#include "tests/fuzz/dtree_fuzz.h"

namespace fuzz {
namespace {

using Nodes = std::vector<ORUDoDtree *>;

Nodes unhidden_of(ORUDoDtree *node) {
    Nodes seen;
    ORUDoIter iter;
    oru_do_dtree_child_iter(node, &iter);
    while (oru_do_dtree_has_next_child(&iter) != 0)
        seen.push_back(oru_do_dtree_get_next_child(&iter));
    CHECK(oru_do_dtree_get_next_child(&iter) == nullptr);
    return seen;
}

// A node in front of what is below it.
void walk(ORUDoDtree *node, Nodes &order) {
    order.push_back(node);
    for (ORUDoDtree *child : children_of(node))
        walk(child, order);
}

Nodes all_of(const Tree &tree) {
    Nodes order;
    walk(tree.root.get(), order);
    return order;
}

// ---- Visits ----

struct Call {
    char kind;
    ORUDoDtree *parent;
    ORUDoDtree *node;
    int32_t level;
    bool operator==(const Call &) const = default;
};

struct Log {
    std::vector<Call> calls;
    size_t stop;  // the call that ends the visit

    int32_t take(Call call) {
        calls.push_back(call);
        return calls.size() != stop ? 1 : 0;
    }
};

int32_t pre(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, void *log) {
    return static_cast<Log *>(log)->take({'<', parent, node, level});
}

int32_t post(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, void *log) {
    return static_cast<Log *>(log)->take({'>', parent, node, level});
}

void expect_depth(ORUDoDtree *parent, ORUDoDtree *node, int32_t level, Log &log) {
    log.calls.push_back({'<', parent, node, level});
    for (ORUDoDtree *child : children_of(node))
        expect_depth(node, child, level + 1, log);
    log.calls.push_back({'>', parent, node, level});
}

// Families: all children, then what is below each, then all children again.
void expect_families(ORUDoDtree *node, int32_t level, Log &log) {
    const Nodes children = children_of(node);
    for (ORUDoDtree *child : children)
        log.calls.push_back({'<', node, child, level});
    for (ORUDoDtree *child : children)
        expect_families(child, level + 1, log);
    for (ORUDoDtree *child : children)
        log.calls.push_back({'>', node, child, level});
}

template <class Visit>
void check_visit(Visit visit, ORUDoDtree *root, const Log &expected, size_t stop) {
    Log log{{}, stop};
    const int32_t finished = visit(root, pre, post, &log);
    const bool stops = stop > 0 && stop <= expected.calls.size();
    CHECK(finished == (stops ? 0 : 1));
    CHECK(log.calls.size() == (stops ? stop : expected.calls.size()));
    CHECK(std::equal(log.calls.begin(), log.calls.end(), expected.calls.begin()));
}

// ---- Paths ----

// Without the blanks at both ends.
std::string stripped(const std::string &text) {
    const size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

std::vector<std::string> segments_of(std::string path) {
    path = stripped(path);
    if (path.ends_with('/'))
        path.pop_back();
    if (path.starts_with('/'))
        path.erase(0, 1);
    std::vector<std::string> segments;
    for (size_t at = 0, end = 0; end != path.npos; at = end + 1) {
        end = path.find('/', at);
        segments.push_back(path.substr(at, end == path.npos ? path.npos : end - at));
    }
    return segments;
}

ORUDoDtree *step(ORUDoDtree *node, const std::string &segment) {
    if (segment == "." || node == nullptr)
        return node;
    if (segment == "..")
        return oru_do_dtree_get_parent(node);
    for (ORUDoDtree *child : children_of(node)) {
        if (name_of(child) == segment)
            return child;
    }
    return nullptr;
}

ORUDoDtree *reached(const Tree &tree, ORUDoDtree *from, const std::string &path, size_t behind) {
    const auto segments = segments_of(path);
    ORUDoDtree *node = path.starts_with('/') ? tree.root.get() : from;
    for (size_t i = 0; i + behind < segments.size(); ++i)
        node = step(node, segments[i]);
    return node;
}

ORUDoValue *value_at(const Tree &tree, ORUDoDtree *from, const std::string &path) {
    const auto segments = segments_of(path);
    ORUDoDtree *node = segments.size() > 1 ? reached(tree, from, path, 1) : from;
    return node != nullptr ? oru_do_dtree_get_value(node, segments.back().c_str())
                           : oru_do_dtree_get_value(from, segments.front().c_str());
}

// ---- Forms ----

size_t count(const std::string &text, std::string_view part) {
    size_t times = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++times;
    return times;
}

size_t shown(ORUDoDtree *node) {
    size_t number = 1;
    for (ORUDoDtree *child : unhidden_of(node))
        number += shown(child);
    return number;
}

}  // namespace

std::string json_of(ORUDoDtree *node) {
    return printed([node](ORUDoStrbuf *buf) { oru_do_dtree_to_json(node, buf); });
}

void check_shape(const Tree &tree) {
    const Nodes order = all_of(tree);
    CHECK(order.size() == tree.nodes.size());
    size_t errors = 0;
    for (ORUDoDtree *node : order) {
        const Nodes children = children_of(node);
        Nodes visible;
        std::copy_if(children.begin(), children.end(), std::back_inserter(visible),
                     [](ORUDoDtree *child) { return oru_do_dtree_is_hidden(child) == 0; });
        CHECK(unhidden_of(node) == visible);
        CHECK(oru_do_dtree_get_child_count(node) == static_cast<int32_t>(children.size()));
        CHECK(oru_do_dtree_get_unhidden_child_count(node) == static_cast<int32_t>(visible.size()));
        CHECK(oru_do_dtree_get_root(node) == tree.root.get());
        for (ORUDoDtree *child : children) {
            CHECK(oru_do_dtree_get_parent(child) == node);
            CHECK(std::strcmp(name_of(oru_do_dtree_get_child_by_name(node, name_of(child))),
                              name_of(child)) == 0);
        }
        errors += oru_do_dtree_get_error(node) != nullptr;
    }
    const Errors list(oru_do_error_list_new());
    CHECK(oru_do_dtree_get_errors(tree.root.get(), list.get()) == static_cast<int32_t>(errors));
    CHECK(oru_do_error_list_get_len(list.get()) == static_cast<int32_t>(errors));
}

void check_visits(const Tree &tree, size_t stop) {
    ORUDoDtree *root = tree.root.get();
    Log depth{{}, 0};
    expect_depth(nullptr, root, 0, depth);
    check_visit(oru_do_dtree_visit_depth_first, root, depth, stop);
    Log families{{{'<', nullptr, root, 0}}, 0};
    expect_families(root, 1, families);
    families.calls.push_back({'>', nullptr, root, 0});
    check_visit(oru_do_dtree_visit_breath_first, root, families, stop);
}

void check_paths(const Tree &tree, const std::string &path) {
    const Text text(path);
    const Value other(oru_do_value_new_null());
    for (ORUDoDtree *node : tree.nodes) {
        ORUDoError *err = nullptr;
        ORUDoDtree *expected = path.empty() ? nullptr : reached(tree, node, path, 0);
        CHECK(oru_do_dtree_get_node_by_path(node, text.get(), &err) == expected);
        ORUDoValue *value = value_at(tree, node, path);
        CHECK(oru_do_dtree_get_value_by_path(node, text.get(), other.get(), &err) ==
              (value != nullptr ? value : other.get()));
        CHECK(err == nullptr);
    }
}

void check_addresses(const Tree &tree, const std::string &query) {
    std::string address = stripped(query);
    if (address.ends_with('/'))
        address.pop_back();
    const size_t mark = address.find('#');
    const std::string path = mark != address.npos ? address.substr(mark + 1) : "";
    address.resize(std::min(mark, address.size()));

    const Uri uri(oru_do_uri_new(Text(address).get()));
    const Nodes order = all_of(tree);
    const auto found = std::find_if(order.begin(), order.end(), [&](ORUDoDtree *node) {
        ORUDoUri *own = oru_do_dtree_get_mr_uri(node);
        return own != nullptr && oru_do_uri_equals(own, uri.get()) != 0;
    });
    ORUDoDtree *node = found != order.end() ? *found : nullptr;
    CHECK(oru_do_dtree_get_node_by_uri(tree.root.get(), uri.get()) == node);

    const Value other(oru_do_value_new_null());
    ORUDoError *err = nullptr;
    ORUDoValue *value =
        node != nullptr && mark != query.npos ? value_at(tree, node, path) : nullptr;
    CHECK(oru_do_dtree_get_value_by_uri(tree.root.get(), Text(query).get(), other.get(), &err) ==
          (value != nullptr ? value : other.get()));
    CHECK(err == nullptr);
}

void check_forms(const Tree &tree) {
    ORUDoDtree *root = tree.root.get();
    const std::string json = json_of(root);
    CHECK(count(json, "{\"name\":") == shown(root));
    ORUDoError *err = nullptr;
    const Node again(oru_do_dtree_from_json(json.data(), static_cast<int32_t>(json.size()), &err));
    CHECK(again != nullptr && err == nullptr);
    if (!tree.hides)
        CHECK(json_of(again.get()) == json);
    for (int32_t indent : {-1, 0}) {
        const std::string xml =
            printed([=](ORUDoStrbuf *buf) { oru_do_dtree_to_xml_tab(indent, "", "", root, buf); });
        CHECK(count(xml, "<root") == 1 && count(xml, "</root>") == 1);
    }
}

}  // namespace fuzz
