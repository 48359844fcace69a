#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/require.h"
#include "oru/util.h"

namespace {

constexpr int kLineSize = 256;
constexpr int32_t kNoBound = -1;

// The number that a line is, with blanks around it; false when it is none. What an `int64_t` cannot
// hold comes out at its ends, which is in no range.
bool to_number(const char *line, int64_t &number) {
    char *end = nullptr;
    number = std::strtoll(line, &end, 10);
    return end != line && end[std::strspn(end, " \t\r")] == '\0';
}

bool in_range(int64_t number, int32_t min, int32_t max) {
    return number >= min && number <= (max == kNoBound ? INT32_MAX : max);
}

void ask_again(int32_t min, int32_t max) {
    if (max == kNoBound) {
        std::printf("Not in range (min=%d)\nEnter new value: ", min);
    } else {
        std::printf("Not in range (min=%d, max=%d)\nEnter new value: ", min, max);
    }
}

}  // namespace

void oru_cl_buf_clean(char *text, FILE *stream) {
    ORU_REQUIRE(text);
    if (char *newline = std::strchr(text, '\n')) {
        *newline = '\0';
        return;
    }
    ORU_REQUIRE(stream);
    for (int c = 0; c != '\n' && c != EOF;)
        c = std::fgetc(stream);
}

int32_t oru_util_read_int(int32_t min, int32_t max) {
    char line[kLineSize];
    while (std::fgets(line, sizeof line, stdin) != nullptr) {
        oru_cl_buf_clean(line, stdin);
        int64_t number = 0;
        if (!to_number(line, number)) {
            std::printf("Failed to convert string to int\nEnter new value: ");
        } else if (in_range(number, min, max)) {
            return static_cast<int32_t>(number);
        } else {
            ask_again(min, max);
        }
        std::fflush(stdout);
    }
    return min;
}
