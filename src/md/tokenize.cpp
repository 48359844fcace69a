// The tokens of conditions and constraints.
#include <cstring>
#include <string_view>

#include "frame/require.h"
#include "frame/text.h"
#include "md/tokens.h"
#include "oru/condition.h"
#include "oru/rc.h"

namespace {

using oru::TokenType;

constexpr size_t kWordSize = 128;

constexpr struct {
    std::string_view word;
    TokenType type;
} kKeywords[] = {
    {"and", TokenType::op_and},        {"or", TokenType::op_or},
    {"not", TokenType::op_not},        {"values", TokenType::values},
    {"size", TokenType::size},         {"strlen", TokenType::strlen},
    {"regex", TokenType::regex},       {"is_null", TokenType::is_null},
    {"not_null", TokenType::not_null}, {"ordered_by", TokenType::ordered_by},
    {"unique", TokenType::unique},     {"default", TokenType::default_value},
};

// A word is classed by what stands behind its last dot.
TokenType type_of_word(std::string_view word) {
    const size_t dot = word.rfind('.');
    const auto tail = dot == std::string_view::npos ? word : word.substr(dot + 1);
    for (const auto &keyword : kKeywords) {
        if (keyword.word == tail)
            return keyword.type;
    }
    return TokenType::word;
}

class Tokenizer {
  public:
    Tokenizer(const char *text, int32_t max, char **tokens, int32_t *types, int32_t &code)
        : next_(text), max_(max), tokens_(tokens), types_(types), code_(code) {}

    // How many tokens there are. A word that nothing ends is none.
    int32_t run() {
        while (*next_ != '\0' && code_ == ORU_OK)
            take(*next_++);
        return count_;
    }

  private:
    void take(char c);
    void take_punctuation(char c, TokenType type);
    void take_json();
    void append(char c);
    void emit(std::string_view text, TokenType type);
    bool emit_word();

    const char *next_;  // behind the character at hand
    int32_t max_;
    char **tokens_;
    int32_t *types_;
    int32_t &code_;
    int32_t count_ = 0;
    char word_[kWordSize];
    size_t length_ = 0;
};

void Tokenizer::take(char c) {
    switch (c) {
        case ' ':
        case '\t':
            emit_word();
            break;
        case '\n':
        case '\r':
            break;
        case '(':
            take_punctuation(c, TokenType::open);
            break;
        case ')':
            take_punctuation(c, TokenType::close);
            break;
        case '|':
            take_punctuation(c, TokenType::bar);
            break;
        case ',':
            emit_word();
            emit(",", TokenType::comma);
            break;
        case '{':
            take_json();
            break;
        default:
            if (c != '.' || *next_ != '.') {
                append(c);
                break;
            }
            ++next_;
            emit_word();
            emit("..", TokenType::dots);
    }
}

// Behind a word these only end it, and an opening parenthesis takes its closing one along.
void Tokenizer::take_punctuation(char c, TokenType type) {
    if (!emit_word())
        emit(std::string_view(&c, 1), type);
    else if (c == '(' && *next_ == ')')
        ++next_;
}

// A literal takes the place of the word before it and ends at its first closing brace.
void Tokenizer::take_json() {
    word_[0] = '{';
    length_ = 1;
    bool quoted = false;
    for (bool ended = false; !ended && *next_ != '\0' && length_ < kWordSize - 1;) {
        const char c = *next_++;
        if (c == '"' && word_[length_ - 1] != '\\')
            quoted = !quoted;
        word_[length_++] = c;
        ended = c == '}' && !quoted;
    }
    emit_word();
}

void Tokenizer::append(char c) {
    if (length_ == kWordSize - 1)
        code_ = ORU_RC_METADATA;
    else
        word_[length_++] = c;
}

void Tokenizer::emit(std::string_view text, TokenType type) {
    if (code_ != ORU_OK)
        return;
    if (count_ >= max_) {
        code_ = ORU_RC_METADATA;
        return;
    }
    tokens_[count_] = oru::duplicate(text.data(), text.size(), oru::Tag::cond_misc);
    if (tokens_[count_] == nullptr) {
        code_ = ORU_RC_MALLOC;
        return;
    }
    types_[count_++] = static_cast<int32_t>(type);
}

bool Tokenizer::emit_word() {
    if (length_ == 0)
        return false;
    const std::string_view word(word_, length_);
    length_ = 0;
    emit(word, type_of_word(word));
    return true;
}

}  // namespace

oru::Tokens::Tokens(const char *text) {
    count = oru_do_condition_tokenize(text, kMost, texts, types, &code);
}

oru::Tokens::~Tokens() {
    for (int32_t i = 0; i < count; ++i) {
        if (texts[i] != nullptr)
            ph_free_named(texts[i]);
    }
}

int32_t oru_do_condition_tokenize(const char *str, int32_t max_tokens, char **tokens,
                                  int32_t *types, int32_t *errp) {
    ORU_REQUIRE(str);
    ORU_REQUIRE(tokens);
    ORU_REQUIRE(types);
    ORU_REQUIRE(errp);
    return Tokenizer(str, max_tokens, tokens, types, *errp).run();
}
