#include "frame/regexp_cost.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace oru {
namespace {

constexpr int64_t kMostCopies = 10000;
constexpr int kMostGroups = 1000;
constexpr int64_t kMostCount = 100000;  // beyond what the C library takes

// Elements in a row that may match nothing: the C library follows all ways through them before it
// reads a text. Ways through places such as "^" it follows once for each set of them, and it makes
// many more sets where they are repeated.
constexpr int64_t kLongestRun = 1000;
constexpr int64_t kPlace = 50;
constexpr int64_t kLoopOfPlaces = 8;

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

// An element of a pattern, with what repeats it.
struct Element {
    int64_t run;  // how many may match nothing in a row within it
    bool may_be_empty;
    bool has_place = false;
};

// One alternative of a group while its elements are read, and those before it.
struct Branches {
    int64_t others = 0;  // the runs of the alternatives before
    bool other_empty = false;
    int64_t longest = 0;
    int64_t tail = 0;  // the run that the next element goes on with
    bool all_empty = true;
    bool has_place = false;

    void take(const Element &element) {
        tail += element.run;
        longest = std::max(longest, tail);
        has_place = has_place || element.has_place;
        if (element.may_be_empty)
            return;
        tail = element.run;
        all_empty = false;
    }
    void next() {
        others += longest;
        other_empty = other_empty || all_empty;
        longest = tail = 0;
        all_empty = true;
    }
    int64_t run() const { return others + longest; }
    Element whole() const {
        const bool may_be_empty = other_empty || all_empty;
        return {run() + (may_be_empty ? 1 : 0), may_be_empty, has_place};
    }
};

class Cost {
  public:
    Cost(const char *pattern, bool extended) : at_(pattern), extended_(extended) {}

    bool is_too_high() {
        while (*at_ != '\0' && !too_high_)
            step();
        settle();
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
        if (special_form && std::strchr("(){+|", c) != nullptr) {
            special(c);
        } else if (special_form && c == '?') {
            pass_over();
        } else if (!escaped && c == '*') {
            loop(element_.run + 1);  // makes no copies
            element_.may_be_empty = true;
        } else {
            if (!escaped && c == '[')
                at_ = skip_brackets(at_);
            const bool is_place = std::strchr(escaped ? "bB<>`'" : "^$", c) != nullptr;
            start({is_place ? kPlace : 0, is_place, is_place});
        }
    }

    // The element before is complete: nothing repeats it any more.
    void start(Element element) {
        settle();
        element_ = element;
        copies_ = 1;
    }

    void settle() {
        branches_[depth_].take(element_);
        too_high_ = too_high_ || branches_[depth_].run() > kLongestRun;
        element_ = {0, true};
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
            case '|':
                start({0, true});
                branches_[depth_].next();
                break;
            default:
                loop(element_.may_be_empty ? 2 * element_.run + 1 : element_.run + 1);
                repeat(2);
        }
    }

    void open() {
        if (depth_ + 1 == kMostGroups) {
            too_high_ = true;
            return;
        }
        start({0, true});
        most_[++depth_] = 1;
        branches_[depth_] = {};
    }

    void close() {
        start({0, true});
        if (depth_ == 0)
            return;
        element_ = branches_[depth_].whole();
        copies_ = most_[depth_--];
        note();
    }

    // {m}, {m,}, {m,n} or {,n}; anything else is for the C library to refuse or to take as text.
    void interval() {
        const int64_t least = read_number(at_);
        int64_t count = least;
        if (*at_ == ',') {
            ++at_;
            if (!is_digit(*at_))
                loop(element_.run + 1);
            count =
                is_digit(*at_) ? std::max(count, read_number(at_)) : std::max<int64_t>(count, 2);
        }
        if (element_.may_be_empty)
            set_run(element_.run * std::max<int64_t>(count, 1));
        if (least == 0)
            pass_over();
        const char *end = extended_ ? "}" : "\\}";
        if (std::strncmp(at_, end, std::strlen(end)) == 0)
            at_ += std::strlen(end);
        repeat(std::max<int64_t>(count, 1));
    }

    // A way around the element.
    void pass_over() {
        set_run(element_.has_place ? 2 * element_.run + 1 : element_.run + 1);
        element_.may_be_empty = true;
    }

    // A way back to its beginning, with that run where it has no places.
    void loop(int64_t run) {
        const bool of_places = element_.has_place && element_.may_be_empty;
        set_run(of_places ? kLoopOfPlaces * element_.run : run);
    }

    // One that is too long already grows no further, so that no number overflows.
    void set_run(int64_t run) { element_.run = std::min(run, kLongestRun + 1); }

    void repeat(int64_t count) {
        const bool nested = copies_ > 1;
        copies_ *= count;
        too_high_ = (nested && copies_ > kMostCopies) || element_.run > kLongestRun;
        note();
    }

    void note() { most_[depth_] = std::max(most_[depth_], copies_); }

    const char *at_;
    bool extended_;
    bool too_high_ = false;
    int64_t copies_ = 1;  // of the element before this place
    int depth_ = 0;
    int64_t most_[kMostGroups] = {1};  // of the elements of each open group
    Element element_{0, true};         // the last one, which may be repeated yet
    Branches branches_[kMostGroups];   // of each open group
};

}  // namespace

bool regexp_is_too_costly(const char *pattern, bool extended) {
    return Cost(pattern, extended).is_too_high();
}

}  // namespace oru
