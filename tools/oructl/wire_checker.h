// The check of one document, over four units: objects, lists, records and values.
#ifndef ORU_TOOLS_ORUCTL_WIRE_CHECKER_H
#define ORU_TOOLS_ORUCTL_WIRE_CHECKER_H

#include "wire_check.h"

namespace oructl {

// A part of the source that is replaced for the reader.
struct Edit {
    size_t begin;
    size_t end;
    std::string text;
};

// Whether a node is an object whose first key tells what it is, or one that has other keys only.
bool is_tagged(const JsonNode &node);
bool is_bare(const JsonNode &node);

// Whether the reader computes it.
bool is_known_function(std::string_view key);

// A number as the reader takes it: what stands in front of the first letter that is no digit.
struct Number {
    bool fits = false;
    bool negative = false;
    uint64_t bits = 0;

    bool within(int64_t min, uint64_t max) const {
        return negative ? static_cast<int64_t>(bits) >= min : bits <= max;
    }
};

Number integer_of(std::string_view digits);
bool has_point(std::string_view digits);

class Checker {
  public:
    Checker(const SourceText &source, const WireOptions &options, CheckedDocument &out)
        : source_(source), options_(options), out_(out) {}

    void check(const JsonNode &document);

  private:
    // ---- What is wrong ----

    void lose(size_t at, const std::string &words) {
        out_.faults.push_back(source_.fault(at, words));
    }
    void refuse(size_t at, const std::string &words) {
        lose(at, words);
        out_.readable = false;
    }
    // The reader gets another member instead, which it skips whatever it looks for: it takes the
    // beginning of a name for the name.
    void leave_out(const JsonNode &member, const std::string &words) {
        lose(member.key_begin, words);
        edits_.push_back({member.key_begin, member.end, "\"-\":null"});
    }
    void refuse_kind(const JsonNode &node, std::string_view what, const char *wanted) {
        refuse(node.begin, std::string(what) + " takes " + wanted + ", not " + words_of(node.kind));
    }

    // ---- Documents ----

    void check_untagged(const JsonNode &document);
    void check_type(const JsonNode &document, const Form &form);

    // ---- Objects ----

    const Form *check_tagged(const JsonNode &node);
    bool check_object(const JsonNode &node, std::string_view what, const char *of);
    void check_payload(const Form &form, const JsonNode &payload);
    void check_beside(const Form &form, const JsonNode &payload);
    bool check_filled(const Form &form, const JsonNode &payload, JsonNode::Kind kind,
                      const char *wanted);

    // ---- Lists ----

    void check_objects(const Form &form, const JsonNode &payload);
    void check_named(const Form &form, const JsonNode &payload);
    void check_rows(const JsonNode &payload);
    void check_texts(const JsonNode &payload);

    // ---- Records ----

    void check_record(const Form &form, const JsonNode &record);
    bool check_member(const Form &form, const Member &member, const JsonNode &node);
    void check_type_name(const JsonNode &node);
    void check_children(const JsonNode &node);
    void check_operation(const JsonNode &record);
    void check_order(const JsonNode &record, std::string_view first, std::string_view behind,
                     const char *words);

    // ---- Values ----

    void check_value(const JsonNode &node, bool in_list = false);
    void check_values(const JsonNode &array, bool in_list = false);
    void check_bare_number(const JsonNode &node, bool at_top);
    void check_scalar(const Form &form, const JsonNode &node);
    void check_integer(const Form &form, const JsonNode &node);
    void check_real(const Form &form, const JsonNode &node);
    void check_hex(const Form &form, const JsonNode &node);
    void check_call(const JsonNode &payload);

    // ---- What the reader gets ----

    void hide(const JsonNode &node);
    void check_zero_bytes(const JsonNode &node);
    std::string edited(const JsonNode &document) const;

    const SourceText &source_;
    const WireOptions &options_;
    CheckedDocument &out_;
    std::vector<Edit> edits_;
};

}  // namespace oructl

#endif
