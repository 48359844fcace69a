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

/* An element "properties" with one element for each property that has a value. Asserts "props". */
ORU_API int32_t oru_do_properties_to_xml(const char *prefix, const char *wrapper,
                                         ORUDoProperties *props, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_properties_to_xml_opt(const char *prefix, const char *wrapper,
                                             ORUDoProperties *props, ORUDoStrbuf *strbuf,
                                             uint32_t opts);

/* An element "properties_list" with the tables in elements "properties". Asserts "list". */
ORU_API int32_t oru_do_properties_list_to_xml(const char *prefix, const char *wrapper,
                                              ORUDoPropertiesList *list, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_properties_list_to_xml_opt(const char *prefix, const char *wrapper,
                                                  ORUDoPropertiesList *list, ORUDoStrbuf *strbuf,
                                                  uint32_t opts);

/* An element "vtable" with the rows in elements "vlist". Asserts "vtable". */
ORU_API int32_t oru_do_vtable_to_xml(const char *prefix, const char *wrapper, ORUDoVtable *vtable,
                                     ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_vtable_to_xml_opt(const char *prefix, const char *wrapper,
                                         ORUDoVtable *vtable, ORUDoStrbuf *strbuf, uint32_t opts);

/*
 * An element "error", its namespace as an attribute, with "code", "message", and "cause" and
 * "prop_errs" where they are. Asserts "err". The second: an element "prop_errs" with a "prop_err"
 * for each entry, which has a "property" and an "error" around the error's element. Asserts
 * "prop_errs".
 */
ORU_API int32_t oru_do_error_to_xml(const char *prefix, ORUDoError *err, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_prop_errs_to_xml(const char *prefix, ORUDoPropErrs *prop_errs,
                                        ORUDoStrbuf *strbuf);

/*
 * An element of the node's name, its URI as an attribute, with the error (under `err_prefix`), the
 * properties and the children that are not hidden. A node without a name gives just these, at its
 * own depth. `indent` is the depth in tabs, negative for no layout; the form without it uses -1.
 * Asserts "dtree".
 */
ORU_API int32_t oru_do_dtree_to_xml(const char *prefix, const char *err_prefix, ORUDoDtree *dtree,
                                    ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_dtree_to_xml_tab(int32_t indent, const char *prefix, const char *err_prefix,
                                        ORUDoDtree *dtree, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_dtree_to_xml_opt(int32_t indent, const char *prefix, const char *err_prefix,
                                        ORUDoDtree *dtree, ORUDoStrbuf *strbuf, uint32_t opts);

/*
 * An element `wrapper`, "event" when it is null, with "name", "uri", "time", "severity" and "info",
 * which holds the properties' element; empty where the event has no URI or info. Name and URI are
 * not escaped. Asserts "event".
 */
ORU_API int32_t oru_do_event_to_xml(const char *prefix, const char *wrapper, ORUDoEvent *event,
                                    ORUDoStrbuf *strbuf);

ORU_END_DECLS

#endif
