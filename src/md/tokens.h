// Types of the tokens of conditions and constraints, by number.
#ifndef ORU_SRC_MD_TOKENS_H
#define ORU_SRC_MD_TOKENS_H

#include <cstdint>

namespace oru {

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

}  // namespace oru

#endif
