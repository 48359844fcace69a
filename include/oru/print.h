/*
 * Printing objects to a stream, for operators and for finding faults.
 */
#ifndef ORU_PRINT_H
#define ORU_PRINT_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/*
 * Print the text form of an object, what its `_to_strbuf` (`_to_strbuf_with_defaults`) writes with
 * that many tabs. A null object, and a buffer that cannot be had, print nothing. Result 0.
 */
ORU_API int32_t oru_do_print_uri(FILE *stream, int32_t tabs, ORUDoUri *object);
ORU_API int32_t oru_do_print_value(FILE *stream, int32_t tabs, ORUDoValue *object);
ORU_API int32_t oru_do_print_nlist(FILE *stream, int32_t tabs, ORUDoNlist *object);
ORU_API int32_t oru_do_print_nvlist(FILE *stream, int32_t tabs, ORUDoNvlist *object);
ORU_API int32_t oru_do_print_vlist(FILE *stream, int32_t tabs, ORUDoVlist *object);
ORU_API int32_t oru_do_print_ntlist(FILE *stream, int32_t tabs, ORUDoNtlist *object);
ORU_API int32_t oru_do_print_property(FILE *stream, int32_t tabs, ORUDoProperty *object);
ORU_API int32_t oru_do_print_properties(FILE *stream, int32_t tabs, ORUDoProperties *object);
ORU_API int32_t oru_do_print_properties_with_defaults(FILE *stream, int32_t tabs,
                                                      ORUDoProperties *object);
ORU_API int32_t oru_do_print_properties_list(FILE *stream, int32_t tabs,
                                             ORUDoPropertiesList *object);
ORU_API int32_t oru_do_print_config_ops(FILE *stream, int32_t tabs, ORUDoConfigOps *object);
ORU_API int32_t oru_do_print_event(FILE *stream, int32_t tabs, ORUDoEvent *object);
ORU_API int32_t oru_do_print_vtable(FILE *stream, int32_t tabs, ORUDoVtable *object);
ORU_API int32_t oru_do_print_vtable_with_defaults(FILE *stream, int32_t tabs, ORUDoVtable *object);

/* Writes `count` tabs. */
ORU_API int32_t oru_do_print_tab(FILE *stream, int32_t count);

/* Writes each of `len` bytes in hexadecimal, as a signed character that is extended to 32 bits,
   with a blank behind it, and then a newline. The second argument is not read. */
ORU_API int32_t oru_do_print_hex_buf(FILE *stream, int32_t unused, const void *buf, int32_t len);

ORU_END_DECLS

#endif
