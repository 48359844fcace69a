#include "time_text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace oructl {
namespace {

using std::chrono::days;
using std::chrono::microseconds;
using std::chrono::sys_days;
using std::chrono::sys_time;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int64_t kMillion = 1000000;
constexpr size_t kFractionDigits = 6;

constexpr int64_t count_of(sys_days day) {
    return microseconds(day.time_since_epoch()).count();
}
constexpr int64_t kFirst = count_of(year(0) / 1 / 1);
constexpr int64_t kEnd = count_of(year(10000) / 1 / 1);

struct Unit {
    std::string_view name;
    uint64_t size;
};
constexpr Unit kUnits[] = {{"d", 86400000000}, {"h", 3600000000}, {"min", 60000000},
                           {"s", 1000000},     {"ms", 1000},      {"us", 1}};
constexpr uint64_t kSecond = 1000000;

// ---- Into text ----

// A fraction behind its point, without zeros at its end; empty for none.
std::string fraction_text(uint64_t part, uint64_t of) {
    std::string digits;
    for (; part != 0; part %= of) {
        of /= 10;
        digits += static_cast<char>('0' + part / of);
    }
    return digits.empty() ? "" : "." + digits;
}

std::string date_text(int64_t count) {
    if (count < kFirst || count >= kEnd)
        return std::to_string(count);
    const sys_time<microseconds> time{microseconds(count)};
    const auto day = std::chrono::floor<days>(time);
    const year_month_day date(day);
    const auto in_day = static_cast<uint64_t>((time - day).count());
    const auto seconds = static_cast<unsigned>(in_day / kSecond);
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02u:%02u:%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text + fraction_text(in_day % kSecond, kSecond) + "Z";
}

// What is below a minute stands in the largest unit that is in it, with a fraction.
std::string duration_text(int64_t count) {
    uint64_t rest = count < 0 ? 0 - static_cast<uint64_t>(count) : static_cast<uint64_t>(count);
    std::string text = count < 0 ? "-" : count == 0 ? "0s" : "";
    const char *between = "";
    for (const Unit &unit : kUnits) {
        if (rest < unit.size)
            continue;
        text += between + std::to_string(rest / unit.size);
        rest %= unit.size;
        if (unit.size <= kSecond)
            text += fraction_text(std::exchange(rest, 0), unit.size);
        text += unit.name;
        between = " ";
    }
    return text;
}

// ---- Out of text ----

class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool at_end() const { return rest_.empty(); }

    bool skip(std::string_view word) {
        if (!rest_.starts_with(word))
            return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    // A number of so many digits.
    std::optional<unsigned> digits(size_t count) {
        const std::string_view text = rest_.substr(0, span());
        if (text.size() < count)
            return std::nullopt;
        unsigned number = 0;
        std::from_chars(text.data(), text.data() + count, number);
        rest_.remove_prefix(count);
        return number;
    }

    std::optional<uint64_t> number() {
        uint64_t number = 0;
        const char *const end = rest_.data() + span();
        if (end == rest_.data() || std::from_chars(rest_.data(), end, number).ec != std::errc())
            return std::nullopt;
        rest_.remove_prefix(span());
        return number;
    }

    // Millionths behind a point, 0 without one.
    std::optional<uint64_t> millionths() {
        if (!skip("."))
            return 0;
        const size_t count = span();
        if (count == 0 || count > kFractionDigits)
            return std::nullopt;
        uint64_t part = *digits(count);
        for (size_t i = count; i < kFractionDigits; ++i)
            part *= 10;
        return part;
    }

    // The unit that stands here as a whole word.
    const Unit *unit() {
        const size_t size = std::min(rest_.find_first_not_of("dhminsu"), rest_.size());
        for (const Unit &unit : kUnits) {
            if (rest_.substr(0, size) == unit.name) {
                rest_.remove_prefix(size);
                return &unit;
            }
        }
        return nullptr;
    }

  private:
    size_t span() const { return std::min(rest_.find_first_not_of("0123456789"), rest_.size()); }

    std::string_view rest_;
};

std::optional<int64_t> read_date(std::string_view text) {
    Scanner scan(text);
    unsigned fields[6];
    constexpr std::string_view kBefore[] = {"", "-", "-", "T", ":", ":"};
    for (size_t i = 0; i < std::size(fields); ++i) {
        const auto field = scan.skip(kBefore[i]) ? scan.digits(i == 0 ? 4 : 2) : std::nullopt;
        if (!field)
            return std::nullopt;
        fields[i] = *field;
    }
    const auto fraction = scan.millionths();
    const auto [y, month, day, hours, minutes, seconds] = fields;
    const year_month_day date =
        year(static_cast<int>(y)) / static_cast<int>(month) / static_cast<int>(day);
    if (!fraction || !scan.skip("Z") || !scan.at_end() || !date.ok() || hours > 23 ||
        minutes > 59 || seconds > 59)
        return std::nullopt;
    return count_of(date) + (hours * 3600 + minutes * 60 + seconds) * kMillion +
           static_cast<int64_t>(*fraction);
}

// One part in microseconds; nothing for what is no whole number of them.
std::optional<uint64_t> read_part(Scanner &scan) {
    const auto number = scan.number();
    const auto fraction = number ? scan.millionths() : std::nullopt;
    const Unit *const unit = fraction ? scan.unit() : nullptr;
    if (unit == nullptr || *fraction * unit->size % kMillion != 0)
        return std::nullopt;
    uint64_t part = 0;
    if (__builtin_mul_overflow(*number, unit->size, &part) ||
        __builtin_add_overflow(part, *fraction * unit->size / kMillion, &part))
        return std::nullopt;
    return part;
}

std::optional<int64_t> read_duration(std::string_view text) {
    Scanner scan(text);
    const bool is_negative = scan.skip("-");
    uint64_t total = 0;
    do {
        while (scan.skip(" ")) {
        }
        const auto part = read_part(scan);
        if (!part || __builtin_add_overflow(total, *part, &total))
            return std::nullopt;
    } while (!scan.at_end());
    constexpr auto kMost = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    if (total > kMost + (is_negative ? 1 : 0))
        return std::nullopt;
    return static_cast<int64_t>(is_negative ? 0 - total : total);
}

}  // namespace

bool is_time_type(int32_t type) {
    return type == ORU_DO_TYPE_DATETIME || type == ORU_DO_TYPE_DURATION;
}

std::string time_text(ORUDoValue *value) {
    int32_t status = ORU_OK;
    const int64_t count = oru_do_value_to_int64(value, &status);
    return oru_do_value_get_type(value) == ORU_DO_TYPE_DATETIME ? date_text(count)
                                                                : duration_text(count);
}

Value read_time(const std::string &text, int32_t type) {
    int32_t status = ORU_OK;
    const bool is_date = type == ORU_DO_TYPE_DATETIME;
    const auto count = is_date ? read_date(text) : read_duration(text);
    if (!count)
        return Value(oru_do_value_new_from_string(text.c_str(), type, &status));
    return made<Value>(is_date ? oru_do_value_new_datetime(*count)
                               : oru_do_value_new_duration(*count));
}

const char *time_example(int32_t type) {
    return type == ORU_DO_TYPE_DATETIME ? "a time like 2023-11-14T22:13:20Z"
                                        : "a duration like 1h 30min or 2.5s";
}

}  // namespace oructl
