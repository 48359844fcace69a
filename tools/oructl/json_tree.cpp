#include "json_tree.h"

#include <yajl/yajl_parse.h>

#include <memory>
#include <new>

namespace oructl {
namespace {

// What the library's reader goes down to.
constexpr size_t kMaxNesting = 1000;

struct FreeHandle {
    void operator()(yajl_handle_t *handle) const { yajl_free(handle); }
};
using Handle = std::unique_ptr<yajl_handle_t, FreeHandle>;

// The quote that opens a text whose last quote is at `at`.
size_t opening_quote(const std::string &source, size_t at) {
    for (;;) {
        at = source.rfind('"', at - 1);
        size_t backslashes = 0;
        while (backslashes < at && source[at - backslashes - 1] == '\\')
            ++backslashes;
        if (backslashes % 2 == 0)
            return at;
    }
}

std::string trimmed(std::string text) {
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

// Within texts, words and numbers the parser stops in front of what it cannot take, elsewhere
// behind it.
bool stops_before(std::string_view fault) {
    return fault.starts_with("lexical error") && fault.find("UTF8") == std::string_view::npos &&
           fault.find("invalid char in") == std::string_view::npos;
}

}  // namespace

// Takes the events of the parse.
struct JsonTree::Builder {
    JsonTree &tree;
    const SourceText &source;
    const TakeElement &take;
    yajl_handle_t *handle = nullptr;

    // An object or array that is not closed yet, with its last member.
    struct Open {
        JsonNode *node;
        JsonNode *last;
    };
    std::vector<Open> open{};
    std::string_view key{};
    size_t key_begin = 0;

    // What there was before the element of a list.
    struct Mark {
        size_t nodes = 0;
        size_t texts = 0;
        JsonNode *last = nullptr;
    };
    Mark mark{};

    size_t position() const { return yajl_get_bytes_consumed(handle); }

    std::string_view keep(const unsigned char *bytes, size_t size) const {
        const auto *text = reinterpret_cast<const char *>(bytes);
        const char *begin = source.content().data();
        if (text >= begin && text <= begin + source.content().size())
            return {text, size};
        return tree.texts_.emplace_back(text, size);
    }

    JsonNode &add(JsonNode::Kind kind, size_t begin) {
        JsonNode &node = tree.nodes_.emplace_back();
        node.kind = kind;
        node.begin = begin;
        node.end = position();
        node.key = key;
        node.key_begin = key_begin;
        key = {};
        if (open.empty()) {
            tree.documents_.push_back(&node);
            return node;
        }
        auto &[parent, last] = open.back();
        (last != nullptr ? last->next : parent->first) = &node;
        last = &node;
        return node;
    }

    int begin(JsonNode::Kind kind) {
        if (open.size() == kMaxNesting) {
            tree.fault_ = source.fault(
                position() - 1, "nested deeper than " + std::to_string(kMaxNesting) + " levels");
            return 0;
        }
        if (is_in_list())
            mark = {tree.nodes_.size(), tree.texts_.size(), open.back().last};
        JsonNode &node = add(kind, position() - 1);
        open.push_back({&node, nullptr});
        return 1;
    }

    int end() {
        JsonNode &node = *open.back().node;
        node.end = position();
        open.pop_back();
        if (take && is_in_list() && take(*open.back().node, node))
            forget_element();
        return 1;
    }

    bool is_in_list() const {
        return open.size() == 2 && open[1].node->kind == JsonNode::kArray &&
               open[0].node->kind == JsonNode::kObject && open[0].node->first == open[1].node;
    }

    void forget_element() {
        while (tree.nodes_.size() > mark.nodes)
            tree.nodes_.pop_back();
        while (tree.texts_.size() > mark.texts)
            tree.texts_.pop_back();
        auto &[list, last] = open.back();
        last = mark.last;
        (last != nullptr ? last->next : list->first) = nullptr;
        list->is_split = true;
    }

    static Builder &of(void *context) { return *static_cast<Builder *>(context); }
    static int on_null(void *context) {
        of(context).add(JsonNode::kNull, of(context).position() - 4);
        return 1;
    }
    static int on_boolean(void *context, int value) {
        of(context).add(JsonNode::kBoolean, of(context).position() - (value != 0 ? 4 : 5));
        return 1;
    }
    static int on_number(void *context, const char *digits, size_t size) {
        of(context).add(JsonNode::kNumber, of(context).position() - size).text = {digits, size};
        return 1;
    }
    static int on_string(void *context, const unsigned char *bytes, size_t size) {
        Builder &self = of(context);
        const size_t begin = opening_quote(self.source.content(), self.position() - 1);
        self.add(JsonNode::kText, begin).text = self.keep(bytes, size);
        return 1;
    }
    static int on_key(void *context, const unsigned char *bytes, size_t size) {
        Builder &self = of(context);
        self.key = self.keep(bytes, size);
        self.key_begin = opening_quote(self.source.content(), self.position() - 1);
        return 1;
    }
    static int on_start_map(void *context) { return of(context).begin(JsonNode::kObject); }
    static int on_start_array(void *context) { return of(context).begin(JsonNode::kArray); }
    static int on_end(void *context) { return of(context).end(); }

    // The parser's own words, where it stopped.
    void note_failure(const std::string &text, size_t at) const {
        const auto *bytes = reinterpret_cast<const unsigned char *>(text.data());
        unsigned char *words = yajl_get_error(handle, 0, bytes, text.size());
        const std::string fault = trimmed(reinterpret_cast<const char *>(words));
        tree.fault_ = source.fault(at > 0 && !stops_before(fault) ? at - 1 : at, fault);
        yajl_free_error(handle, words);
    }
};

JsonTree::JsonTree(const SourceText &source, TakeElement take) {
    static constexpr yajl_callbacks kEvents = {
        Builder::on_null,
        Builder::on_boolean,
        nullptr,
        nullptr,
        Builder::on_number,
        Builder::on_string,
        Builder::on_start_map,
        Builder::on_key,
        Builder::on_end,
        Builder::on_start_array,
        Builder::on_end,
    };
    Builder builder{*this, source, take};
    const Handle handle(yajl_alloc(&kEvents, nullptr, &builder));
    if (!handle)
        throw std::bad_alloc();
    builder.handle = handle.get();
    yajl_config(handle.get(), yajl_allow_comments, 1);
    yajl_config(handle.get(), yajl_allow_multiple_values, 1);
    const std::string &text = source.content();
    const auto *bytes = reinterpret_cast<const unsigned char *>(text.data());
    yajl_status status = yajl_parse(handle.get(), bytes, text.size());
    const size_t end = builder.position();
    if (status == yajl_status_ok)
        status = yajl_complete_parse(handle.get());  // counts anew
    if (status == yajl_status_error && text.find_first_not_of(" \t\r\n") == std::string::npos)
        fault_ = source.fault(0, "there is no document");
    else if (status == yajl_status_error)
        builder.note_failure(text, end);
    if (status == yajl_status_ok || documents_.empty())
        return;
    // What was read of the document that broke off is none.
    if (!builder.open.empty())
        documents_.pop_back();
}

bool is_json(std::string_view text) {
    const Handle handle(yajl_alloc(nullptr, nullptr, nullptr));
    if (!handle)
        throw std::bad_alloc();
    const auto *bytes = reinterpret_cast<const unsigned char *>(text.data());
    return yajl_parse(handle.get(), bytes, text.size()) == yajl_status_ok &&
           yajl_complete_parse(handle.get()) == yajl_status_ok;
}

const char *words_of(JsonNode::Kind kind) {
    switch (kind) {
        case JsonNode::kNull:
            return "null";
        case JsonNode::kBoolean:
            return "a boolean";
        case JsonNode::kNumber:
            return "a number";
        case JsonNode::kText:
            return "a text";
        case JsonNode::kObject:
            return "an object";
        default:
            return "an array";
    }
}

}  // namespace oructl
