// Objects with fixed members.
#include <oru/oru.h>

#include <algorithm>

#include "fault_words.h"
#include "wire_checker.h"

namespace oructl {

void Checker::check_record(const Form &form, const JsonNode &record) {
    std::vector<bool> found(form.members.size());
    for (const JsonNode *node = record.first; node != nullptr; node = node->next) {
        const auto member = std::ranges::find_if(
            form.members, [&](const Member &known) { return known.name == node->key; });
        if (member == form.members.end()) {
            leave_out(*node, in_quotes(node->key) + " is no member of " + form.tag);
            continue;
        }
        const auto index = static_cast<size_t>(member - form.members.begin());
        if (found[index])
            lose(node->key_begin, in_quotes(node->key) + " stands here twice; the first is read");
        if (check_member(form, *member, *node))
            found[index] = true;
    }
    for (size_t i = 0; i < found.size(); ++i) {
        if (form.members[i].required && !found[i])
            refuse(record.begin,
                   std::string(form.tag) + " needs " + in_quotes(form.members[i].name));
    }
    if (form.is("%dtree"))
        check_order(record, "name", "children", "before \"name\" children are lost");
    if (form.is("%typedef_meta") && std::count(found.begin() + 1, found.end(), true) == 0)
        refuse(record.begin,
               "%typedef_meta needs \"simple_type\", \"enum\", \"sequence\" or \"choice\"");
}

// Whether the reader takes the member.
bool Checker::check_member(const Form &form, const Member &member, const JsonNode &node) {
    const std::string what = in_quotes(member.name) + " of " + form.tag;
    switch (member.want) {
        case Want::text:
            if (node.kind != JsonNode::kText)
                break;
            if (member.name == std::string_view("simple_type"))
                check_type_name(node);
            return true;
        case Want::integer:
            if (node.kind == JsonNode::kNumber && !has_point(node.text)) {
                static constexpr Form kWord{"a number", Payload::integer, INT32_MIN, INT32_MAX};
                static constexpr Form kTime{"a time", Payload::integer, INT64_MIN, INT64_MAX};
                check_integer(member.name == std::string_view("time") ? kTime : kWord, node);
                return true;
            }
            break;
        case Want::object:
            return check_object(node, what, member.of);
        case Want::children:
            check_children(node);
            return true;
        default:
            leave_out(node, in_quotes(member.name) + ": " + member.of);
            return true;
    }
    if (node.kind == JsonNode::kObject || node.kind == JsonNode::kArray)
        refuse_kind(node, what, member.want == Want::text ? "a text" : "an integer");
    else
        lose(node.begin, what + " takes " + (member.want == Want::text ? "a text" : "an integer") +
                             "; this is left out");
    return false;
}

void Checker::check_type_name(const JsonNode &node) {
    const std::string name(node.text);
    if (oru_do_get_typecode_by_typestr(name.c_str()) == ORU_DO_TYPE_UNKNOWN)
        lose(node.begin, in_quotes(name) + " is no built-in type; it is read as unknown");
}

void Checker::check_children(const JsonNode &node) {
    const JsonNode *list = node.first;
    if (node.kind != JsonNode::kObject || list == nullptr || list->key != "%dtree" ||
        list->kind != JsonNode::kArray || list->next != nullptr) {
        refuse(node.begin, "\"children\" of %dtree takes {\"%dtree\":[node,...]}");
        return;
    }
    const Form *form = find_form("%dtree");
    for (const JsonNode *child = list->first; child != nullptr; child = child->next) {
        if (is_bare(*child))
            check_payload(*form, *child);
        else if (!check_object(*child, "\"children\"", "%dtree"))
            out_.readable = false;
    }
}

// An operation is made as soon as its parts are there, and is none without them.
void Checker::check_operation(const JsonNode &record) {
    const Form &form = *find_form("%config_ops");
    bool complete[2] = {};
    for (const JsonNode *node = record.first; node != nullptr; node = node->next) {
        const auto member = std::ranges::find_if(
            form.members, [&](const Member &known) { return known.name == node->key; });
        if (member == form.members.end()) {
            leave_out(*node, in_quotes(node->key) + " is no member of an operation");
            continue;
        }
        const std::string_view name = member->name;
        const bool made = complete[0] && complete[1];
        if (made && name != "err")
            lose(node->key_begin,
                 in_quotes(name) +
                     " is lost behind \"mr_uri\" and \"props\", which make the operation");
        const bool taken = check_member(form, *member, *node);
        complete[0] = complete[0] || (taken && name == "mr_uri");
        complete[1] = complete[1] || (taken && name == "props");
        if (taken && name == "op_code" && integer_of(node->text).bits == 0)
            lose(node->begin, "an operation of the code 0 is left out");
    }
    if (!complete[0] || !complete[1])
        lose(record.begin, "an operation needs \"mr_uri\" and \"props\"; this is left out");
}

void Checker::check_order(const JsonNode &record, std::string_view first, std::string_view behind,
                          const char *words) {
    for (const JsonNode *node = record.first; node != nullptr && node->key != first;
         node = node->next) {
        if (node->key == behind)
            lose(node->key_begin, words);
    }
}

}  // namespace oructl
