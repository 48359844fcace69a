// Values that a command line gives, in the types that the model has for them.
#ifndef ORU_TOOLS_ORUCTL_VALUE_READER_H
#define ORU_TOOLS_ORUCTL_VALUE_READER_H

#include <oru/oru.h>

#include <string>

#include "handles.h"
#include "json_tree.h"
#include "support/value_type.h"

namespace oructl {

// One attribute and its values. Everything throws `Failure`.
class ValueReader {
  public:
    explicit ValueReader(ORUDoPropMeta *meta);

    // A text, or JSON when it begins with {, [ or ".
    Value read(const std::string &text) const;

    // Bytes stand in addresses as pairs of digits.
    Value read_text_of_key(const std::string &text) const;

  private:
    // Nothing of a secret is printed.
    bool is_secret() const;
    [[noreturn]] void fail(const std::string &text, const std::string &expected) const;
    Value read_text(const std::string &text) const;
    Value read_time_text(const std::string &text) const;
    std::string bounds() const;
    Value read_json(const std::string &text) const;
    Value read_array(const std::string &text, const JsonNode &array) const;
    // Texts and numbers are read as on the command line, the rest as it stands on the wire.
    Value read_node(const std::string &text, const JsonNode &node) const;
    bool is_members(const JsonNode &node) const;

    ORUDoPropMeta *meta_;
    std::string name_;
    int32_t type_;
    bool is_many_;
};

// A value that stands for itself: JSON, or else a text. Throws `Failure`.
Value read_free_value(const std::string &name, const std::string &text);

}  // namespace oructl

#endif
