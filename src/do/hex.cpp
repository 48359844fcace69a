#include "oru/hex.h"

int32_t oru_util_ctoh(int32_t c) {
    const auto word = static_cast<uint32_t>(c);
    const uint32_t character = word & 0xff;
    uint32_t digit = 0;
    if (character >= '0' && character <= '9')
        digit = character - '0';
    else if (character >= 'a' && character <= 'f')
        digit = character - 'a' + 10;
    else if (character >= 'A' && character <= 'F')
        digit = character - 'A' + 10;
    return static_cast<int32_t>((word & ~uint32_t{0xff}) | digit);
}

int32_t oru_util_strtoh(const char *text, int32_t n, void *out) {
    auto *bytes = static_cast<uint8_t *>(out);
    const auto digit = [](char c) { return oru_util_ctoh(static_cast<unsigned char>(c)); };
    int32_t count = 0;
    for (; count < n / 2; ++count, text += 2) {
        if (text[0] == '\0' || text[1] == '\0')
            break;
        bytes[count] = static_cast<uint8_t>(digit(text[0]) << 4 | digit(text[1]));
    }
    return count;
}
