#include "frame/regexp_cost.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace oru {
namespace {

constexpr int64_t kMostCopies = 10000;
constexpr int kMostGroups = 1000;
constexpr int64_t kMostCount = 100000;  // beyond what the C library takes

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

int64_t read_number(const char *&at) {
    int64_t number = 0;
    for (; is_digit(*at); ++at)
        number = std::min(number * 10 + (*at - '0'), kMostCount);
    return number;
}

// Behind a bracket expression whose "[" was read.
const char *skip_brackets(const char *at) {
    if (*at == '^')
        ++at;
    if (*at == ']')
        ++at;
    while (*at != '\0' && *at != ']') {
        const char kind = at[1];
        if (*at != '[' || kind == '\0' || std::strchr(".:=", kind) == nullptr) {
            ++at;
            continue;
        }
        const char close[] = {kind, ']', '\0'};
        const char *end = std::strstr(at + 2, close);
        if (end == nullptr)
            return at + std::strlen(at);
        at = end + 2;
    }
    return *at == ']' ? at + 1 : at;
}

class Cost {
  public:
    Cost(const char *pattern, bool extended) : at_(pattern), extended_(extended) {}

    bool is_too_high() {
        while (*at_ != '\0' && !too_high_)
            step();
        return too_high_;
    }

  private:
    // Takes one element of the pattern. In extended syntax the special characters stand bare, in
    // basic syntax behind a backslash.
    void step() {
        const bool escaped = *at_ == '\\' && at_[1] != '\0';
        if (escaped)
            ++at_;
        const char c = *at_++;
        const bool special_form = escaped != extended_;
        if (special_form && std::strchr("(){+", c) != nullptr) {
            special(c);
        } else if ((special_form && c == '?') || (!escaped && c == '*')) {
            // makes no copies
        } else {
            if (!escaped && c == '[')
                at_ = skip_brackets(at_);
            copies_ = 1;
        }
    }

    void special(char c) {
        switch (c) {
            case '(':
                open();
                break;
            case ')':
                close();
                break;
            case '{':
                interval();
                break;
            default:
                repeat(2);
        }
    }

    void open() {
        if (depth_ + 1 == kMostGroups) {
            too_high_ = true;
            return;
        }
        most_[++depth_] = 1;
        copies_ = 1;
    }

    void close() {
        copies_ = 1;
        if (depth_ == 0)
            return;
        copies_ = most_[depth_--];
        note();
    }

    // {m}, {m,}, {m,n} or {,n}; anything else is for the C library to refuse or to take as text.
    void interval() {
        int64_t count = read_number(at_);
        if (*at_ == ',') {
            ++at_;
            count =
                is_digit(*at_) ? std::max(count, read_number(at_)) : std::max<int64_t>(count, 2);
        }
        const char *end = extended_ ? "}" : "\\}";
        if (std::strncmp(at_, end, std::strlen(end)) == 0)
            at_ += std::strlen(end);
        repeat(std::max<int64_t>(count, 1));
    }

    void repeat(int64_t count) {
        const bool nested = copies_ > 1;
        copies_ *= count;
        too_high_ = nested && copies_ > kMostCopies;
        note();
    }

    void note() { most_[depth_] = std::max(most_[depth_], copies_); }

    const char *at_;
    bool extended_;
    bool too_high_ = false;
    int64_t copies_ = 1;  // of the element before this place
    int depth_ = 0;
    int64_t most_[kMostGroups] = {1};  // of the elements of each open group
};

}  // namespace

bool regexp_is_too_costly(const char *pattern, bool extended) {
    return Cost(pattern, extended).is_too_high();
}

}  // namespace oru
