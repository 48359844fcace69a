// The tokens of conditions and constraints.
#ifndef ORU_SRC_MD_TOKENS_H
#define ORU_SRC_MD_TOKENS_H

#include <cstdint>

namespace oru {

// Types of tokens, by number.
enum class TokenType : int32_t {
    word = 1,
    open = 2,
    close = 3,
    bar = 4,
    dots = 5,
    comma = 6,
    op_and = 7,
    op_or = 8,
    op_not = 9,
    values = 10,
    size = 11,
    strlen = 12,
    regex = 13,
    is_null = 14,
    not_null = 15,
    ordered_by = 16,
    unique = 17,
    default_value = 18
};

// The first hundred tokens of a text, which is all that an expression may have.
struct Tokens {
    static constexpr int32_t kMost = 100;

    char *texts[kMost] = {};  // a null stands where a text was taken over
    int32_t types[kMost] = {};
    int32_t count = 0;
    int32_t code = 0;

    explicit Tokens(const char *text);
    Tokens(const Tokens &) = delete;
    Tokens &operator=(const Tokens &) = delete;
    ~Tokens();

    TokenType type(int32_t index) const { return static_cast<TokenType>(types[index]); }
    bool is(int32_t index, TokenType wanted) const {
        return index < count && type(index) == wanted;
    }
};

}  // namespace oru

#endif
