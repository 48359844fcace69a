// Text forms of the objects that have none in the library: lines with `tabs` tabs in front.
#ifndef ORU_TOOLS_ORUCTL_OBJECT_TEXT_H
#define ORU_TOOLS_ORUCTL_OBJECT_TEXT_H

#include <oru/oru.h>

#include <string>

namespace oructl {

// A drawing, with URIs, values in compact JSON, and errors.
void dtree_text(ORUDoDtree *dtree, int32_t tabs, ORUDoStrbuf *buf);

// A description on one line, or one on each.
void typedef_text(ORUDoTypedefMeta *meta, int32_t tabs, ORUDoStrbuf *buf);
void ntlist_text(ORUDoNtlist *list, int32_t tabs, ORUDoStrbuf *buf);
void prop_meta_text(ORUDoPropMeta *meta, int32_t tabs, ORUDoStrbuf *buf);
void prop_meta_list_text(ORUDoPropMetaList *list, int32_t tabs, ORUDoStrbuf *buf);
void mr_meta_text(ORUDoMrMeta *meta, int32_t tabs, ORUDoStrbuf *buf);
void mr_meta_list_text(ORUDoMrMetaList *list, int32_t tabs, ORUDoStrbuf *buf);

// Objects on one line.
std::string uri_words(ORUDoUri *uri);
std::string error_words(ORUDoError *error);

}  // namespace oructl

#endif
