// What an element of a document of the data tree language means beside the node that it made, and
// what is wrong with it.
#ifndef ORU_TOOLS_ORUCTL_DTL_ELEMENTS_H
#define ORU_TOOLS_ORUCTL_DTL_ELEMENTS_H

#include <string>
#include <utility>
#include <vector>

#include "dtl_attributes.h"
#include "dtl_check.h"

namespace oructl {

// The resource of a node, null for none.
ORUDoMrMeta *meta_of(const ORUDtlNode &node);

bool is_action(const ORUDtlNode &node);

// Finds faults, and adds them to the items that are drawn.
class DtlElements {
  public:
    // `resources` are all that the model has.
    DtlElements(const DtlDocument &document, std::vector<std::string> resources)
        : document_(document), resources_(std::move(resources)) {}

    void add(DtlItem &item, const xmlNode *element, const std::string &words) const;
    void check_attributes(DtlItem &item, const xmlNode *element, DtlRole role) const;

    // One with an address.
    void check_resource(DtlItem &item, const xmlNode *element) const;
    // One without an address; `above` is the node above its own.
    DtlRole check_node(DtlItem &item, ORUDtlNode &above, const ORUDtlNode &node,
                       const xmlNode *element) const;
    void check_order_of_rows(DtlItem &item, ORUDtlNode &node, const xmlNode *element) const;
    void check_where(DtlItem &item, const ORUDtlNode &node, const xmlNode *where) const;

  private:
    void check_keys(DtlItem &item, const xmlNode *element, const ORUMdMrMeta &mr) const;
    void check_unmatched(DtlItem &item, const ORUDtlNode &above, const ORUDtlNode &node,
                         const xmlNode *element) const;
    void check_filter(DtlItem &item, ORUDtlNode &above, const xmlNode *element) const;
    void check_condition(DtlItem &item, const ORUDtlNode &node, const xmlNode *element) const;

    const DtlDocument &document_;
    std::vector<std::string> resources_;
};

}  // namespace oructl

#endif
