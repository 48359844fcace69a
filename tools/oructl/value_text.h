// Values as people read them: times are no counts, and parts stand on one line.
#ifndef ORU_TOOLS_ORUCTL_VALUE_TEXT_H
#define ORU_TOOLS_ORUCTL_VALUE_TEXT_H

#include <oru/oru.h>

#include <string>

namespace oructl {

// In a cell or on a line. A default is told to be one.
std::string cell_text(ORUDoValue *value);

// In a drawing: texts stand in quotes, as in JSON.
std::string value_words(ORUDoValue *value);

}  // namespace oructl

#endif
