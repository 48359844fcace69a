// What the XML forms of all objects write.
#ifndef ORU_SRC_DO_XML_H
#define ORU_SRC_DO_XML_H

#include "oru/strbuf.h"

namespace oru {

// "<", the prefix (null for none) and the name: attributes and ">" are to follow.
void xml_begin_tag(ORUDoStrbuf *strbuf, const char *prefix, const char *name);

// " name=", and the text in quotes and escaped; nothing for a null text.
void xml_attribute(ORUDoStrbuf *strbuf, const char *name, const char *text);

// "</", the prefix, the name and ">".
void xml_end_tag(ORUDoStrbuf *strbuf, const char *prefix, const char *name);

}  // namespace oru

#endif
