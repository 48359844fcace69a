#include "oru/print.h"

#include "do/print.h"
#include "oru/config_op.h"
#include "oru/event.h"
#include "oru/nlist.h"
#include "oru/ntlist.h"
#include "oru/nvlist.h"
#include "oru/properties.h"
#include "oru/properties_list.h"
#include "oru/uri.h"
#include "oru/value.h"
#include "oru/vlist.h"
#include "oru/vtable.h"

ORU_PRINT_API(uri, ORUDoUri, uri_to_strbuf)
ORU_PRINT_API(value, ORUDoValue, value_to_strbuf)
ORU_PRINT_API(nlist, ORUDoNlist, nlist_to_strbuf)
ORU_PRINT_API(nvlist, ORUDoNvlist, nvlist_to_strbuf)
ORU_PRINT_API(vlist, ORUDoVlist, vlist_to_strbuf)
ORU_PRINT_API(ntlist, ORUDoNtlist, ntlist_to_strbuf)
ORU_PRINT_API(property, ORUDoProperty, property_to_strbuf)
ORU_PRINT_API(properties, ORUDoProperties, properties_to_strbuf)
ORU_PRINT_API(properties_with_defaults, ORUDoProperties, properties_to_strbuf_with_defaults)
ORU_PRINT_API(properties_list, ORUDoPropertiesList, properties_list_to_strbuf)
ORU_PRINT_API(config_ops, ORUDoConfigOps, config_ops_to_strbuf)
ORU_PRINT_API(event, ORUDoEvent, event_to_strbuf)
ORU_PRINT_API(vtable, ORUDoVtable, vtable_to_strbuf)
ORU_PRINT_API(vtable_with_defaults, ORUDoVtable, vtable_to_strbuf_with_defaults)

int32_t oru_do_print_tab(FILE *stream, int32_t count) {
    for (; count > 0; --count)
        std::fputc('\t', stream);
    return ORU_OK;
}

// Bytes of 128 and above print with leading digits f: readers of the output know it so.
int32_t oru_do_print_hex_buf(FILE *stream, int32_t, const void *buf, int32_t len) {
    const auto *bytes = static_cast<const signed char *>(buf);
    for (int32_t i = 0; i < len; ++i)
        std::fprintf(stream, "%x ", static_cast<unsigned>(bytes[i]));
    std::fputc('\n', stream);
    return ORU_OK;
}
