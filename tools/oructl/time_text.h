// Points in time and durations as people read and write them. The library has both as counts of
// microseconds, points in time since 1970 in UTC.
#ifndef ORU_TOOLS_ORUCTL_TIME_TEXT_H
#define ORU_TOOLS_ORUCTL_TIME_TEXT_H

#include <string>

#include "handles.h"

namespace oructl {

// Whether values of that type are points in time or durations.
bool is_time_type(int32_t type);

// "2023-11-14T22:13:20.5Z" or "1d 2h 3min 4.5s". A point in time whose year has not four digits is
// a count.
std::string time_text(ORUDoValue *value);

// A value of a type of time from what `time_text` gives, or from a count; null for another text.
// Blanks in a duration may be left out, and its units are d h min s ms us.
Value read_time(const std::string &text, int32_t type);

// What such a text looks like.
const char *time_example(int32_t type);

}  // namespace oructl

#endif
