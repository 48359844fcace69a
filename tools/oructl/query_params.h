// Parameters of a query, as a command line gives them.
#ifndef ORU_TOOLS_ORUCTL_QUERY_PARAMS_H
#define ORU_TOOLS_ORUCTL_QUERY_PARAMS_H

#include <oru/oru.h>

#include <string>
#include <vector>

#include "handles.h"

namespace oructl {

// NAME=VALUE arguments, each a value in JSON or else a text. Throws `Failure`.
NameValueList read_params(const std::vector<std::string> &texts);

// Those that are compared with times become times. Throws `Failure` for what is none.
NameValueList with_times(ORUDoNvlist *params, const ORUDtlNode &document);

}  // namespace oructl

#endif
