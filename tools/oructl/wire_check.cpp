#include "wire_check.h"

#include <oru/oru.h>

#include <algorithm>

#include "fault_words.h"
#include "secrets.h"
#include "wire_checker.h"

namespace oructl {
namespace {

constexpr char kTypedefTag[] = "%typedef";
constexpr char kHidden[] = "\"<removed>\"";

// The reader takes the beginning of a key for the key.
bool begins(std::string_view start, std::string_view known) {
    return known.starts_with(start);
}

}  // namespace

bool is_tagged(const JsonNode &node) {
    return node.kind == JsonNode::kObject && node.first != nullptr && is_tag(node.first->key);
}

bool is_bare(const JsonNode &node) {
    return node.kind == JsonNode::kObject && node.first != nullptr && !is_tag(node.first->key);
}

bool is_known_function(std::string_view key) {
    return is_function(key) &&
           oru_json_get_type_info(key.data(), static_cast<int32_t>(key.size())) != nullptr;
}

// ---- Documents ----

void Checker::check(const JsonNode &document) {
    check_zero_bytes(document);
    if (!is_tagged(document)) {
        check_untagged(document);
    } else if (const Form *form = check_tagged(document)) {
        check_type(document, *form);
    } else if (!is_known_function(document.first->key)) {
        out_.readable = false;
    } else if (!options_.type.empty() && options_.type != "value") {
        refuse(document.begin, "an expression, where %" + options_.type + " is expected");
    }
    const bool is_split = document.first != nullptr && document.first->is_split;
    if (out_.readable && !is_split)
        out_.text = edited(document);
}

void Checker::check_type(const JsonNode &document, const Form &form) {
    out_.form = is_value(form) ? nullptr : &form;
    const std::string &type = options_.type;
    const bool expected =
        type.empty() || (type == "value" ? is_value(form) : find_form("%" + type) == &form);
    if (!expected)
        refuse(document.begin, std::string(form.tag) + ", where %" + type + " is expected");
}

// What is expected stands in front of a document that does not tell it.
void Checker::check_untagged(const JsonNode &document) {
    const bool scalar = document.kind != JsonNode::kObject && document.kind != JsonNode::kArray;
    if (options_.type.empty() && !scalar) {
        refuse(document.begin,
               std::string(words_of(document.kind)) + " without a tag; --type tells what it is");
        return;
    }
    if (options_.type.empty() || options_.type == "value") {
        if (document.kind == JsonNode::kNumber)
            check_bare_number(document, true);
        else
            check_value(document);
        return;
    }
    const Form *form = find_form("%" + options_.type);
    out_.form = is_value(*form) ? nullptr : form;
    check_payload(*form, document);
    if (is_read_untagged(*form))
        return;
    edits_.push_back({document.begin, document.begin, "{\"" + std::string(form->tag) + "\":"});
    edits_.push_back({document.end, document.end, "}"});
}

// ---- Objects ----

// The form of a tagged object, null for an expression and for what is not readable.
const Form *Checker::check_tagged(const JsonNode &node) {
    const JsonNode &payload = *node.first;
    if (is_function(payload.key)) {
        check_call(payload);
        return nullptr;
    }
    const Form *form = find_form(payload.key);
    if (form == nullptr) {
        const std::string question = similar_question(payload.key, known_tags());
        lose(payload.key_begin, "no type is known by " + in_quotes(payload.key) +
                                    (question.empty() ? "; this is left out" : question));
        return nullptr;
    }
    if (const auto whole = whole_tag(payload.key); whole != payload.key)
        lose(payload.key_begin, in_quotes(payload.key) + " is read as " + in_quotes(whole));
    if (is_read_untagged(*form))
        edits_.push_back({node.begin, payload.begin, ""});
    check_payload(*form, payload);
    check_beside(*form, payload);
    if (is_read_untagged(*form))
        edits_.push_back({payload.end, node.end, ""});
    return form;
}

// Behind the payload only the name of a derived type is read, and only of a value.
void Checker::check_beside(const Form &form, const JsonNode &payload) {
    const std::string_view tag = form.tag;
    for (const JsonNode *other = payload.next; other != nullptr; other = other->next) {
        const bool is_typedef = other->key.starts_with('%') && begins(other->key, kTypedefTag);
        if (!is_typedef || !is_value(form)) {
            refuse(other->key_begin,
                   in_quotes(other->key) + " beside " + in_quotes(tag) + ", where " +
                       (is_value(form) ? "only " + in_quotes(kTypedefTag) : "nothing") +
                       " may stand");
        } else if (other->kind != JsonNode::kText) {
            lose(other->begin,
                 in_quotes(kTypedefTag) + " takes a text, not " + words_of(other->kind));
        } else if (other->key != kTypedefTag) {
            lose(other->key_begin, in_quotes(other->key) + " is read as " + in_quotes(kTypedefTag));
        }
        const bool hides = is_typedef && other->kind == JsonNode::kText &&
                           secrecy_of_type(other->text) != Secret::none && !options_.show_secrets;
        if (hides && (tag == "%string" || form.payload == Payload::values))
            hide(payload);
    }
}

// An object of the type `of`, with its tag.
bool Checker::check_object(const JsonNode &node, std::string_view what, const char *of) {
    if (!is_tagged(node)) {
        lose(node.begin, std::string(what) + " takes {\"" + of + "\":...}; this is left out");
        // What has no tag is not skipped everywhere.
        if (node.kind == JsonNode::kObject || node.kind == JsonNode::kArray)
            out_.readable = false;
        return false;
    }
    const Form *form = check_tagged(node);
    if (form != nullptr && !form->is(of))
        lose(node.begin,
             std::string(what) + " takes " + of + ", not " + form->tag + "; this is left out");
    return form != nullptr && form->is(of);
}

bool Checker::check_filled(const Form &form, const JsonNode &payload, JsonNode::Kind kind,
                           const char *wanted) {
    if (payload.kind != kind) {
        refuse_kind(payload, form.tag, wanted);
        return false;
    }
    if (payload.first == nullptr && !payload.is_split && !form.may_be_empty)
        refuse(payload.begin, std::string(form.tag) + " is empty, which does not read");
    return payload.first != nullptr;
}

void Checker::check_payload(const Form &form, const JsonNode &payload) {
    switch (form.payload) {
        case Payload::null:
            if (payload.kind != JsonNode::kNull)
                refuse_kind(payload, form.tag, "null");
            break;
        case Payload::values:
            if (check_filled(form, payload, JsonNode::kArray, "an array"))
                check_values(payload, form.is("%vlist"));
            break;
        case Payload::named_values:
        case Payload::named_objects:
            check_named(form, payload);
            break;
        case Payload::texts:
            if (check_filled(form, payload, JsonNode::kArray, "an array"))
                check_texts(payload);
            break;
        case Payload::objects:
            if (check_filled(form, payload, JsonNode::kArray, "an array"))
                check_objects(form, payload);
            break;
        case Payload::rows:
            if (check_filled(form, payload, JsonNode::kArray, "an array of rows"))
                check_rows(payload);
            break;
        case Payload::record:
            if (check_filled(form, payload, JsonNode::kObject, "an object"))
                check_record(form, payload);
            break;
        default:
            check_scalar(form, payload);
            break;
    }
}

// ---- What the reader gets ----

// Texts of a secret type, as they are read into values of it.
void Checker::hide(const JsonNode &node) {
    if (node.kind == JsonNode::kText) {
        edits_.push_back({node.begin, node.end, kHidden});
    } else if (node.kind == JsonNode::kArray) {
        for (const JsonNode *element = node.first; element != nullptr; element = element->next)
            hide(*element);
    } else if (is_tagged(node)) {
        const Form *form = find_form(node.first->key);
        if (form != nullptr && form->is("%string"))
            hide(*node.first);
    }
}

// Texts of objects end at a zero byte, and so do the names that are compared.
void Checker::check_zero_bytes(const JsonNode &node) {
    const bool in_text = node.kind == JsonNode::kText && node.text.find('\0') != node.text.npos;
    const bool in_key = node.key.find('\0') != node.key.npos;
    if (in_text || in_key)
        refuse(in_key ? node.key_begin : node.begin, "\\u0000, at which a text ends");
    for (const JsonNode *inner = node.first; inner != nullptr; inner = inner->next)
        check_zero_bytes(*inner);
}

// The number that ends a text is only seen with something behind it.
std::string Checker::edited(const JsonNode &document) const {
    std::vector<Edit> edits = edits_;
    std::ranges::stable_sort(edits, {}, &Edit::begin);
    std::string text;
    size_t at = document.begin;
    for (const Edit &edit : edits) {
        if (edit.begin < at)
            continue;
        text.append(source_.content(), at, edit.begin - at);
        text += edit.text;
        at = edit.end;
    }
    return text.append(source_.content(), at, document.end - at) + "\n";
}

CheckedDocument check_document(const SourceText &source, const JsonNode &document,
                               const WireOptions &options) {
    CheckedDocument checked;
    Checker(source, options, checked).check(document);
    return checked;
}

}  // namespace oructl
