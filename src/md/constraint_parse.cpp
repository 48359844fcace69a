// The parts of a constraint from its text.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "do/strbuf.h"
#include "do/value.h"
#include "frame/text.h"
#include "md/constraint.h"
#include "md/tokens.h"

namespace {

using oru::Level;
using oru::Ref;
using oru::TokenType;

using Strbuf = Ref<ORUDoStrbuf>;

// A walk over the tokens. Reading a range may end it.
class Parser {
  public:
    Parser(ORUDoConstraint &constraint, int32_t typecode, ORUDoEnumResolver resolver)
        : constraint_(constraint),
          tokens_(constraint.constraint_str),
          typecode_(typecode),
          resolver_(resolver) {}

    void run() {
        while (next_ < tokens_.count)
            take_keyword(tokens_.type(next_++));
    }

  private:
    void take_keyword(TokenType keyword);
    void take_range(ORUDoRange *&out, int32_t typecode);
    void take_bounds(ORUDoRange *range, ORUDoStrbuf *lower_buf, ORUDoStrbuf *upper_buf);
    const char *resolved(const char *text, ORUDoStrbuf *strbuf);
    void take_regex();
    void take_default();
    void fail();

    // The token that a keyword is given, whatever it is; null at the end.
    const char *argument() { return next_ < tokens_.count ? tokens_.texts[next_++] : nullptr; }
    bool is_word(int32_t index) const { return tokens_.is(index, TokenType::word); }

    ORUDoConstraint &constraint_;
    oru::Tokens tokens_;
    int32_t typecode_;
    ORUDoEnumResolver resolver_;
    int32_t next_ = 0;
};

void Parser::take_keyword(TokenType keyword) {
    switch (keyword) {
        case TokenType::values:
            take_range(constraint_.values, typecode_);
            break;
        case TokenType::size:
            take_range(constraint_.size, ORU_DO_TYPE_LONG);
            break;
        case TokenType::strlen:
            take_range(constraint_.strlen, ORU_DO_TYPE_LONG);
            break;
        case TokenType::regex:
            take_regex();
            break;
        case TokenType::ordered_by:
            if (const char *word = argument();
                word != nullptr && std::string_view(word).starts_with("user"))
                constraint_.ordered_by_user = 1;
            argument();  // what follows goes too
            break;
        case TokenType::unique:
            constraint_.unique = 1;
            argument();
            break;
        case TokenType::default_value:
            take_default();
            break;
        default:
            break;
    }
}

// What was read until then stays.
void Parser::fail() {
    ORU_TRACE(Level::failure, "Failed to allocate strbuf");
    next_ = tokens_.count;
}

bool is_usable(const Strbuf &strbuf) {
    return strbuf && oru_do_strbuf_get_err(strbuf.get()) == 0;
}

void Parser::take_range(ORUDoRange *&out, int32_t typecode) {
    auto range = Ref<ORUDoRange>::adopt(oru_do_range_new_t(typecode));
    if (!range)
        return;
    oru_do_range_deref(std::exchange(out, oru_do_range_ref(range.get())));
    if (resolver_ == nullptr) {
        take_bounds(range.get(), nullptr, nullptr);
        return;
    }
    const auto lower_buf = Strbuf::adopt(oru_do_strbuf_new());
    const auto upper_buf = Strbuf::adopt(oru_do_strbuf_new());
    if (is_usable(lower_buf) && is_usable(upper_buf))
        take_bounds(range.get(), lower_buf.get(), upper_buf.get());
    else
        fail();
}

// A bound as it is to be read: what a label stands for takes its place. Null without memory.
const char *Parser::resolved(const char *text, ORUDoStrbuf *strbuf) {
    if (resolver_ == nullptr || std::strchr(text, '/') == nullptr)
        return text;
    ORUDoValue *value = resolver_(text);
    if (value == nullptr)
        return text;
    oru_do_strbuf_clear(strbuf);
    oru_do_value_to_strbuf(value, 0, strbuf);
    return oru_do_strbuf_get_err(strbuf) == 0 ? oru_do_strbuf_to_string(strbuf) : nullptr;
}

// Goes on as long as there are plain words.
void Parser::take_bounds(ORUDoRange *range, ORUDoStrbuf *lower_buf, ORUDoStrbuf *upper_buf) {
    while (is_word(next_)) {
        const bool pair = tokens_.is(next_ + 1, TokenType::dots) && is_word(next_ + 2);
        const char *lower = resolved(tokens_.texts[next_], lower_buf);
        const char *upper = pair ? resolved(tokens_.texts[next_ + 2], upper_buf) : nullptr;
        if (lower == nullptr || (pair && upper == nullptr)) {
            fail();
            return;
        }
        oru_do_range_add_lower_upper(range, lower, upper);
        next_ += pair ? 3 : 1;
    }
}

bool is_removed(char c) {
    return c == '(' || c == ')' || c == '"' || c == ' ';
}

void Parser::take_regex() {
    const char *word = argument();
    if (word == nullptr)
        return;
    oru::replace_text(constraint_.regex_str, word);
    char *pattern = constraint_.regex_str;
    if (pattern == nullptr)
        return;
    *std::remove_if(pattern, pattern + std::strlen(pattern), is_removed) = '\0';
    oru::free_regex(constraint_.regex);
    // The result does not tell of a holder that could not be had.
    oru_regcomp(&constraint_.regex, pattern, REG_EXTENDED);
    if (constraint_.regex == nullptr)
        ORU_TRACE(Level::failure, "Unable to regcomp");
}

// A string in quotes, without those at its ends.
ORUDoValue *unquoted(std::string_view text) {
    text.remove_prefix(1);
    if (text.ends_with('"'))
        text.remove_suffix(1);
    return oru_do_value_new_string_l(text.data(), static_cast<int32_t>(text.size()));
}

void Parser::take_default() {
    const char *word = argument();
    if (word == nullptr)
        return;
    int32_t code = 0;
    auto value = typecode_ == ORU_DO_TYPE_STRING && word[0] == '"'
                     ? Ref<ORUDoValue>::adopt(unquoted(word))
                     : oru::value_from_constraint_text(word, typecode_, code);
    oru_do_value_deref(
        std::exchange(constraint_.default_value, code == 0 ? value.release() : nullptr));
}

}  // namespace

void oru::parse_constraint(ORUDoConstraint &constraint, int32_t typecode,
                           ORUDoEnumResolver resolver) {
    Parser(constraint, typecode, resolver).run();
}

void oru::free_regex(oru_regexp *&regex) {
    if (regex == nullptr)
        return;
    oru_regfree(regex);
    ph_free_named(std::exchange(regex, nullptr));
}
