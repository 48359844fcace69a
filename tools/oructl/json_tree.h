// JSON texts as trees that know their places.
#ifndef ORU_TOOLS_ORUCTL_JSON_TREE_H
#define ORU_TOOLS_ORUCTL_JSON_TREE_H

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "source_text.h"

namespace oructl {

struct JsonNode {
    enum Kind { kNull, kBoolean, kNumber, kText, kObject, kArray };

    Kind kind = kNull;
    size_t begin = 0;  // in the source, with quotes and brackets
    size_t end = 0;
    std::string_view text{};  // of a text, without escapes, or the digits of a number
    std::string_view key{};   // of a member of an object
    size_t key_begin = 0;
    const JsonNode *first = nullptr;  // member or element
    const JsonNode *next = nullptr;
    bool is_split = false;  // elements of it were taken as they came
};

// Takes an element of a list, which goes when this returns. False leaves it in the tree.
using TakeElement = std::function<bool(const JsonNode &list, const JsonNode &element)>;

// The documents of a source, one behind the other. Comments are allowed. A fault ends the reading:
// no JSON, a document that nests deeper than the library reads, a source without any document.
class JsonTree {
  public:
    // `take` gets the objects and arrays of an array that is the first member of its document, so
    // that there is no tree of a long list.
    explicit JsonTree(const SourceText &source, TakeElement take = nullptr);
    JsonTree(const JsonTree &) = delete;
    JsonTree &operator=(const JsonTree &) = delete;

    const std::vector<const JsonNode *> &documents() const { return documents_; }
    const std::optional<Fault> &fault() const { return fault_; }

  private:
    struct Builder;

    std::deque<JsonNode> nodes_;
    std::deque<std::string> texts_;  // those that have escapes in the source
    std::vector<const JsonNode *> documents_;
    std::optional<Fault> fault_;
};

// Whether a text is one JSON document.
bool is_json(std::string_view text);

// "a text", "an object".
const char *words_of(JsonNode::Kind kind);

}  // namespace oructl

#endif
