// The forms of objects on the wire: what stands behind each tag.
#ifndef ORU_TOOLS_ORUCTL_WIRE_FORMS_H
#define ORU_TOOLS_ORUCTL_WIRE_FORMS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace oructl {

enum class Payload {
    null,
    integer,
    real,
    boolean,
    text,
    hex,
    values,         // an array of values
    named_values,   // an object of values
    texts,          // an array of texts
    objects,        // an array of objects of the type `of`
    named_objects,  // an object of such
    rows,           // an array of arrays of values
    record          // an object of `members`
};

enum class Want { text, integer, object, children, nothing };

struct Member {
    const char *name;
    Want want;
    bool required = false;
    const char *of = nullptr;  // tag of an object; what is to be said of a member that is not read
};

struct Form {
    const char *tag;
    Payload payload;
    int64_t min = 0;
    uint64_t max = 0;
    const char *of = nullptr;
    std::span<const Member> members{};
    bool may_be_empty = false;

    bool is(std::string_view other) const { return other == tag; }
};

// The form of a tag as the reader takes it: the first type whose tag begins so. Three tags that the
// reader takes for those of their lists are known by their full names. Null for none.
const Form *find_form(std::string_view tag);

// The tag that the reader takes a known one for.
std::string_view whole_tag(std::string_view tag);

// A scalar or complex value, or null.
bool is_value(const Form &form);

// One of the three: read only where its type is expected.
bool is_read_untagged(const Form &form);

// Whether a key makes its object a tagged one, or an expression.
bool is_tag(std::string_view key);
bool is_function(std::string_view tag);

// All tags, in the order of the reader's table, and the same in one line without their "%".
std::vector<std::string> known_tags();
std::string known_types();

}  // namespace oructl

#endif
