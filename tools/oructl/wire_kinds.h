// How each kind of object is read and written.
#ifndef ORU_TOOLS_ORUCTL_WIRE_KINDS_H
#define ORU_TOOLS_ORUCTL_WIRE_KINDS_H

#include <oru/oru.h>

#include "wire_forms.h"

namespace oructl {

struct Kind {
    const char *tag;  // null for values
    // JSON with the options of the library's writers.
    void (*to_json)(void *object, ORUDoStrbuf *buf, uint32_t options);
    // Null where there is no such form. `indent` counts tabs, -1 for no layout.
    void (*to_xml)(void *object, ORUDoStrbuf *buf, int32_t indent);
    void (*to_text)(void *object, ORUDoStrbuf *buf, int32_t tabs);
};

// The kind of a form, null for values.
const Kind &kind_of(const Form *form);

// The type code under which an object without a tag is read as that form.
int64_t expected_code(const Form *form);

}  // namespace oructl

#endif
