// Lists of texts, objects and rows, and what is told by name.
#include <oru/oru.h>

#include <unordered_set>

#include "fault_words.h"
#include "wire_checker.h"

namespace oructl {

void Checker::check_texts(const JsonNode &payload) {
    for (const JsonNode *text = payload.first; text != nullptr; text = text->next) {
        if (text->kind == JsonNode::kText)
            continue;
        lose(text->begin,
             std::string("%nlist takes texts; ") + words_of(text->kind) + " is left out");
        out_.readable = out_.readable && text->first == nullptr &&
                        text->kind != JsonNode::kObject && text->kind != JsonNode::kArray;
    }
}

// A list's objects need no tag.
void Checker::check_objects(const Form &form, const JsonNode &payload) {
    const Form *of = find_form(form.of);
    for (const JsonNode *object = payload.first; object != nullptr; object = object->next) {
        const bool bare = is_bare(*object);
        if (bare && of == &form)
            check_operation(*object);
        else if (bare)
            check_payload(*of, *object);
        else if (of == &form)
            refuse(object->begin, std::string(form.tag) + " takes operations, which have no tag");
        else
            check_object(*object, form.tag, form.of);
    }
}

void Checker::check_named(const Form &form, const JsonNode &payload) {
    // An array of such values, each with its tag.
    if (payload.kind == JsonNode::kArray && is_value(form) && payload.first != nullptr) {
        for (const JsonNode *value = payload.first; value != nullptr; value = value->next) {
            if (!check_object(*value, form.tag, form.tag))
                out_.readable = false;
        }
        return;
    }
    if (!check_filled(form, payload, JsonNode::kObject, "an object"))
        return;
    std::unordered_set<std::string_view> names;
    const bool once = !is_value(form) && !form.is("%nvlist");
    for (const JsonNode *member = payload.first; member != nullptr; member = member->next) {
        if (is_tag(member->key))
            lose(member->key_begin,
                 in_quotes(member->key) + " is taken for a tag, not for a name, and is left out");
        if (once && !names.insert(member->key).second)
            lose(member->key_begin,
                 in_quotes(member->key) + " stands here twice; the first is read");
        if (form.payload == Payload::named_values)
            check_value(*member);
        else
            check_object(*member, form.tag, form.of);
    }
}

// A row is an array. A table is empty, or has rows that are not.
void Checker::check_rows(const JsonNode &payload) {
    for (const JsonNode *row = payload.first; row != nullptr; row = row->next) {
        if (row->kind == JsonNode::kArray) {
            check_value(*row, true);
        } else if (is_tagged(*row)) {
            check_tagged(*row);
            lose(row->begin, "a row with a tag is left out; a row is [value,...]");
        } else {
            refuse_kind(*row, "%vtable", "rows, which are arrays");
        }
    }
}

}  // namespace oructl
