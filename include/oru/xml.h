/*
 * The XML forms of the objects that hold values, all on top of that of values (`oru/value.h`).
 * `prefix` is written before each element's name, as a rule a namespace with its colon; it may be
 * null. `wrapper` names the enclosing element, null for the name of the kind. `opts` is the options
 * word of values; the forms without it use 0.
 *
 * Results are always 0: what memory did not allow shows in the state of the buffer. The object and
 * the buffer ("strbuf") are asserted.
 */
#ifndef ORU_XML_H
#define ORU_XML_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/*
 * An element "vlist" with one element `item_name` ("value" for null) for each value. With a null
 * wrapper the element tells the common type of the values, when they have one. An empty wrapper
 * leaves the enclosing element out. Asserts "vlist".
 */
ORU_API int32_t oru_do_vlist_to_xml(const char *prefix, const char *wrapper, const char *item_name,
                                    ORUDoVlist *vlist, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_vlist_to_xml_opt(const char *prefix, const char *wrapper,
                                        const char *item_name, ORUDoVlist *vlist,
                                        ORUDoStrbuf *strbuf, uint32_t opts);

/* An element "nvlist" with one element for each value, of the value's name. An empty wrapper leaves
   the enclosing element out. Asserts "nvlist". */
ORU_API int32_t oru_do_nvlist_to_xml(const char *prefix, const char *wrapper, ORUDoNvlist *nvlist,
                                     ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_nvlist_to_xml_opt(const char *prefix, const char *wrapper,
                                         ORUDoNvlist *nvlist, ORUDoStrbuf *strbuf, uint32_t opts);

ORU_END_DECLS

#endif
