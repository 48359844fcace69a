// Values, and the expressions that give some.
#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "fault_words.h"
#include "wire_checker.h"

namespace oructl {
namespace {

bool ends_process(std::string_view function) {
    return function == "_div()" || function == "_mod()" || function == "_key()";
}

}  // namespace

Number integer_of(std::string_view digits) {
    Number number;
    const char *end = digits.data() + digits.size();
    number.negative = digits.front() == '-';
    if (number.negative) {
        int64_t value = 0;
        number.fits = std::from_chars(digits.data(), end, value).ec == std::errc();
        number.bits = static_cast<uint64_t>(value);
    } else {
        number.fits = std::from_chars(digits.data(), end, number.bits).ec == std::errc();
    }
    return number;
}

bool has_point(std::string_view digits) {
    return digits.find('.') != std::string_view::npos;
}

void Checker::check_value(const JsonNode &node, bool in_list) {
    if (node.kind == JsonNode::kNumber) {
        check_bare_number(node, false);
    } else if (node.kind == JsonNode::kArray && !in_list) {
        refuse(node.begin, "an array stands in no object without a tag: {\"%array\":[...]}");
    } else if (node.kind == JsonNode::kArray) {
        if (node.first == nullptr)
            refuse(node.begin, "an empty list, which does not read");
        check_values(node, true);
    } else if (node.kind == JsonNode::kObject) {
        if (!is_tagged(node)) {
            refuse(node.begin, "a value has a tag: {\"%TYPE\":...}");
        } else if (const Form *form = check_tagged(node)) {
            if (!is_value(*form) && !form->is("%vlist"))
                lose(node.begin, std::string(form->tag) + " is no value; it is read as null");
        }
    }
}

void Checker::check_values(const JsonNode &array, bool in_list) {
    for (const JsonNode *value = array.first; value != nullptr; value = value->next)
        check_value(*value, in_list);
}

// In an object 32 bits are kept, at the top 64.
void Checker::check_bare_number(const JsonNode &node, bool at_top) {
    static constexpr Form kInt{"a bare integer", Payload::integer, INT32_MIN, INT32_MAX};
    static constexpr Form kLong{"a bare integer", Payload::integer, INT64_MIN, INT64_MAX};
    static constexpr Form kReal{"a bare number", Payload::real};
    if (has_point(node.text))
        check_real(kReal, node);
    else
        check_integer(at_top ? kLong : kInt, node);
}

void Checker::check_scalar(const Form &form, const JsonNode &node) {
    if (node.kind == JsonNode::kArray) {
        for (const JsonNode *element = node.first; element != nullptr; element = element->next) {
            if (element->kind == JsonNode::kArray)
                refuse(element->begin, std::string("an array in an array of ") + form.tag);
            else
                check_scalar(form, *element);
        }
        return;
    }
    if (form.payload == Payload::integer && node.kind == JsonNode::kNumber) {
        check_integer(form, node);
    } else if (form.payload == Payload::integer) {
        refuse_kind(node, form.tag, "an integer");
    } else if (form.payload == Payload::real && node.kind == JsonNode::kNumber) {
        check_real(form, node);
    } else if (form.payload == Payload::real) {
        refuse_kind(node, form.tag, "a number");
    } else if (form.payload == Payload::boolean && node.kind != JsonNode::kBoolean) {
        refuse_kind(node, form.tag, "true or false");
    } else if (form.payload == Payload::hex && node.kind == JsonNode::kText) {
        check_hex(form, node);
    } else if (form.payload != Payload::boolean && node.kind == JsonNode::kObject) {
        refuse_kind(node, form.tag, "a text");
    } else if (form.payload != Payload::boolean && node.kind != JsonNode::kText) {
        lose(node.begin, std::string(form.tag) + " takes a text; this is read as null");
    }
}

void Checker::check_integer(const Form &form, const JsonNode &node) {
    const std::string what = form.tag;
    if (has_point(node.text)) {
        refuse(node.begin, what + " takes an integer, without a point");
        return;
    }
    const Number number = integer_of(node.text);
    if (!number.fits) {
        lose(node.begin, what + " has 64 bits at most; this is left out");
    } else if (node.text.find_first_of("eE") != std::string_view::npos) {
        lose(node.begin, what + " is read without its exponent; the digits may be written in full");
    } else if (!number.within(form.min, form.max)) {
        lose(node.begin, what + " is cut here: it goes from " + std::to_string(form.min) + " to " +
                             std::to_string(form.max));
    }
}

void Checker::check_real(const Form &form, const JsonNode &node) {
    errno = 0;
    const double number = std::strtod(std::string(node.text).c_str(), nullptr);
    if (errno == ERANGE)
        lose(node.begin, std::string(form.tag) + " is out of range; this is left out");
    else if (form.is("%float") && std::fabs(number) > double{FLT_MAX})
        refuse(node.begin, "%float is out of range");
}

void Checker::check_hex(const Form &form, const JsonNode &node) {
    const bool digits =
        node.text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
    if (!digits || node.text.size() % 2 != 0)
        refuse(node.begin, std::string(form.tag) + " takes two hexadecimal digits a byte");
}

// Expressions are computed where they are read.
void Checker::check_call(const JsonNode &payload) {
    const std::string name = in_quotes(payload.key);
    if (!is_known_function(payload.key)) {
        lose(payload.key_begin, "no function is known by " + name + "; this is left out");
        return;
    }
    out_.expression = std::min(out_.expression, payload.key_begin);
    if (ends_process(payload.key) && !options_.computes_later) {
        refuse(payload.key_begin, name + " is not computed here: it can end the process");
    }
    if (payload.next != nullptr)
        refuse(payload.next->key_begin,
               in_quotes(payload.next->key) + " beside " + name + ", where nothing may stand");
    if (payload.kind == JsonNode::kObject)
        refuse(payload.begin, name + " takes an object in an array: [{...}]");
    else if (payload.kind != JsonNode::kArray)
        check_value(payload);
    else if (payload.first == nullptr)
        refuse(payload.begin, name + " without arguments gives nothing");
    else
        check_values(payload);
}

}  // namespace oructl
